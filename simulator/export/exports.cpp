// The library's C entry points: each forwards to the one simulated board.
#include "driver/TL42RQ.h"
#include "simulator/board.h"

extern "C" {

int32_t TL42RQDLL_USBconnect(void) { return sim::board().usbConnect(); }
int32_t TL42RQDLL_USBhandlecheck(void) { return sim::board().usbHandleCheck(); }
int32_t TL42RQDll_GetDLLrev(char* a) { return sim::board().dllRevision(a); }
int32_t TL42RQDLL_getMCUrev(char* a) { return sim::board().mcuRevision(a); }
int32_t TL42RQDll_Idn(char* a) { return sim::board().idn(a); }
int32_t TL42RQDll_Echo(char* a) { return sim::board().echo(a); }
int32_t TL42RQDll_Select(const char* p, char* a) { return sim::board().select(p, a); }
int32_t TL42RQDll_SendReceive(const char* f, char* a) { return sim::board().sendReceive(f, a); }
int32_t TL42RQDll_KQCmd(const char* f, char* a) { return sim::board().kqCmd(f, a); }
int32_t TL42RQDll_FieldOff(char* a) { return sim::board().fieldOff(a); }
int32_t TL42RQDll_ResetSPI(char* a) { return sim::board().resetSpi(a); }
int32_t TL42RQDll_SendIRQPulse(char* a) { return sim::board().irqPulse(a); }
int32_t TL42RQDll_SendNSSPulse(char* a) { return sim::board().nssPulse(a); }
int32_t TL42RQDll_Polling_Reading(char* a) { return sim::board().pollingReading(a); }
int32_t TL42RQDLL_getInterfacePinState(char* a) { return sim::board().interfacePinState(a); }

int32_t TL42RQSim_LoadField(const char* jsonTextOrPath) { return sim::board().loadField(jsonTextOrPath); }
int32_t TL42RQSim_DumpField(char* out, int32_t size) { return sim::board().dumpField(out, size); }
int32_t TL42RQSim_SetBoardPresent(int32_t present) { return sim::board().setBoardPresent(present); }
int32_t TL42RQSim_Reset(void) { return sim::board().reset(); }
const char* TL42RQSim_LastError(void) { return sim::board().lastError(); }
}
