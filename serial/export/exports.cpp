// The serial driver's C entry points: each forwards to the one driver on the one port
// that the environment names. Only the fifteen operations are exported: the program calls
// a library "simulated board" only when it has the simulator's control functions.
#include "driver/TL42RQ.h"
#include "serial/driver.h"

namespace {

serialline::SerialDriver& driver() {
  static const serialline::Settings settings = serialline::Settings::fromEnvironment();
  static serialline::PosixLine line(settings);
  static serialline::SerialDriver instance(line, settings.timeoutMs);
  return instance;
}

}  // namespace

extern "C" {

int32_t TL42RQDLL_USBconnect(void) { return driver().usbConnect(); }
int32_t TL42RQDLL_USBhandlecheck(void) { return driver().usbHandleCheck(); }
int32_t TL42RQDll_GetDLLrev(char* a) { return driver().dllRevision(a); }
int32_t TL42RQDLL_getMCUrev(char* a) { return driver().mcuRevision(a); }
int32_t TL42RQDll_Idn(char* a) { return driver().idn(a); }
int32_t TL42RQDll_Echo(char* a) { return driver().echo(a); }
int32_t TL42RQDll_Select(const char* p, char* a) { return driver().select(p, a); }
int32_t TL42RQDll_SendReceive(const char* f, char* a) { return driver().sendReceive(f, a); }
int32_t TL42RQDll_KQCmd(const char* f, char* a) { return driver().kqCmd(f, a); }
int32_t TL42RQDll_FieldOff(char* a) { return driver().fieldOff(a); }
int32_t TL42RQDll_ResetSPI(char* a) { return driver().resetSpi(a); }
int32_t TL42RQDll_SendIRQPulse(char* a) { return driver().irqPulse(a); }
int32_t TL42RQDll_SendNSSPulse(char* a) { return driver().nssPulse(a); }
int32_t TL42RQDll_Polling_Reading(char* a) { return driver().pollingReading(a); }
int32_t TL42RQDLL_getInterfacePinState(char* a) { return driver().interfacePinState(a); }
}
