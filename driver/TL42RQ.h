/* The DEMO-TL42RQ-A board's driver library: fifteen operations on hexadecimal text.
 *
 * Every operation returns a status: 0 when the exchange with the board took place,
 * 5 when the board could not be reached. Requests are read-only NUL-terminated text;
 * answers are written into a caller's buffer of TL42RQ_ANSWER_SIZE characters that the
 * caller zero-fills first. The simulated board (libTL42RQ.so) and the vendor's library
 * both export exactly these symbols, so either can lie beside the program. */
#ifndef TL42RQ_DRIVER_H
#define TL42RQ_DRIVER_H

#include <stdint.h>

#define TL42RQ_ANSWER_SIZE 256

#if defined(_WIN32)
#define TL42RQ_API __declspec(dllexport)
#else
#define TL42RQ_API __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
extern "C" {
#endif

TL42RQ_API int32_t TL42RQDLL_USBconnect(void);
TL42RQ_API int32_t TL42RQDLL_USBhandlecheck(void);
TL42RQ_API int32_t TL42RQDll_GetDLLrev(char* answer);
TL42RQ_API int32_t TL42RQDLL_getMCUrev(char* answer);
TL42RQ_API int32_t TL42RQDll_Idn(char* answer);
TL42RQ_API int32_t TL42RQDll_Echo(char* answer);
TL42RQ_API int32_t TL42RQDll_Select(const char* parameters, char* answer);
TL42RQ_API int32_t TL42RQDll_SendReceive(const char* frame, char* answer);
TL42RQ_API int32_t TL42RQDll_KQCmd(const char* frame, char* answer);
TL42RQ_API int32_t TL42RQDll_FieldOff(char* answer);
TL42RQ_API int32_t TL42RQDll_ResetSPI(char* answer);
TL42RQ_API int32_t TL42RQDll_SendIRQPulse(char* answer);
TL42RQ_API int32_t TL42RQDll_SendNSSPulse(char* answer);
TL42RQ_API int32_t TL42RQDll_Polling_Reading(char* answer);
TL42RQ_API int32_t TL42RQDLL_getInterfacePinState(char* answer);

/* Control interface of the simulated board only; the vendor's library has none of it. */
TL42RQ_API int32_t TL42RQSim_LoadField(const char* jsonTextOrPath);
TL42RQ_API int32_t TL42RQSim_DumpField(char* out, int32_t size);
TL42RQ_API int32_t TL42RQSim_SetBoardPresent(int32_t present);
TL42RQ_API int32_t TL42RQSim_Reset(void);
TL42RQ_API const char* TL42RQSim_LastError(void);

#ifdef __cplusplus
}
#endif

#endif
