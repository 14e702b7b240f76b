// Reconnecting to the board after status 5: open the USB link again, check it, and when
// it holds, select the panel's protocol afresh. One routine per protocol, shared by every
// panel that works in that protocol.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "reader/Exchange.h"
#include "reader/ReaderDriver.h"

namespace reader {

// What a reconnect sends after a good link check.
enum class ReconnectKind {
  Plain,              // nothing: toolbox, console, script, the tools' plain one
  Script14443A,       // the script's, with its short select text
  Script14443B,
  Iso15693,           // "010D"
  Iso15693Fast,       // "011D"
  Iso14443A,
  Iso14443ATopaz,
  Iso14443BPanel,     // the panel's, with a blank in its KQCmd text
  Iso14443BTools,     // the tools', without
  Iso18092,           // also the tools' FeliCa reconnect
};

struct ConfigStep {
  Op op;
  std::string request;
};

// The calls a reconnect of this kind sends after a good check, in order.
std::vector<ConfigStep> reconnectSteps(ReconnectKind kind);

// Connect, check, and either mark the board NOT CONNECTED (result 5) or send the steps
// and mark it CONNECTED (result 0). The steps' own answers and statuses are dropped.
std::int32_t reconnectBoard(ReaderDriver& d, ReconnectKind kind);

// A Reconnect callback for `exchange`.
Reconnect reconnectWith(ReaderDriver& d, ReconnectKind kind);

// The panels' reconnect methods by their names; each sets `result` as described above.
void DEMO_TL42RQ_A_reconnect(ReaderDriver& d, std::int32_t& result);
void DEMO_TL42RQ_A_reconnect_Demokit_tools(ReaderDriver& d, std::int32_t& result);
void DEMO_TL42RQ_A_reconnect_UserInterface(ReaderDriver& d, std::int32_t& result);
void DEMO_TL42RQ_A_reconnect_script(ReaderDriver& d, std::int32_t& result);
void DEMO_TL42RQ_A_reconnect_script_iso14443A(ReaderDriver& d, std::int32_t& result);
void DEMO_TL42RQ_A_reconnect_script_iso14443B(ReaderDriver& d, std::int32_t& result);
void DEMO_TL42RQ_A_reconnect_iso15693(ReaderDriver& d, std::int32_t& result, int fastMode);
void DEMO_TL42RQ_A_reconnect_iso14443A(ReaderDriver& d, std::int32_t& result);
void DEMO_TL42RQ_A_reconnect_iso14443A_TOPAZ(ReaderDriver& d, std::int32_t& result);
void DEMO_TL42RQ_A_reconnect_iso14443B(ReaderDriver& d, std::int32_t& result, bool panelText);
void DEMO_TL42RQ_A_reconnect_iso18092(ReaderDriver& d, std::int32_t& result);
void DEMO_TL42RQ_A_reconnect_Felica(ReaderDriver& d, std::int32_t& result);

}  // namespace reader
