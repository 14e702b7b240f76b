#include "reader/Reconnect.h"

#include "console/ChipFrames.h"
#include "shell/GlobVariables.h"

namespace reader {

namespace {

std::vector<ConfigStep> iso14443AConfiguration(const std::string& selectParameters) {
  return {{Op::Select, selectParameters},
          {Op::KQCmd, std::string("01") + chip::kTimerConfiguration},
          {Op::KQCmd, std::string("01") + chip::iso14443AModulationGainFrame(glob::state().iso14443AModulationGain)},
          {Op::KQCmd, std::string("01") + chip::kCodecConfiguration14443A}};
}

std::vector<ConfigStep> iso18092Configuration() {
  return {{Op::Select, "0451"},
          {Op::KQCmd, std::string("01") + chip::kModulationGain50},
          {Op::KQCmd, std::string("01") + chip::kCodecConfiguration18092}};
}

}  // namespace

std::vector<ConfigStep> reconnectSteps(ReconnectKind kind) {
  switch (kind) {
    case ReconnectKind::Plain:
      return {};
    case ReconnectKind::Script14443A:
      // Seven digits: the script has always sent this short text. Its answer is never
      // looked at, like every answer of a reconnect.
      return {{Op::Select, "0200110"}};
    case ReconnectKind::Script14443B:
      return {{Op::Select, "0301"}};
    case ReconnectKind::Iso15693:
      return {{Op::Select, "010D"}};
    case ReconnectKind::Iso15693Fast:
      return {{Op::Select, "011D"}};
    case ReconnectKind::Iso14443A:
      return iso14443AConfiguration("02000180");
    case ReconnectKind::Iso14443ATopaz:
      return iso14443AConfiguration("02000300");
    case ReconnectKind::Iso14443BPanel:
      // The panel's text keeps a blank after the mode field; the tools' does not.
      return {{Op::Select, "03010180"}, {Op::KQCmd, std::string("01 ") + chip::kModulationGain30}};
    case ReconnectKind::Iso14443BTools:
      return {{Op::Select, "03010180"}, {Op::KQCmd, std::string("01") + chip::kModulationGain30}};
    case ReconnectKind::Iso18092:
      return iso18092Configuration();
  }
  return {};
}

std::int32_t reconnectBoard(ReaderDriver& d, ReconnectKind kind) {
  auto& g = glob::state();
  d.call(Op::USBconnect, nullptr, nullptr);
  if (d.call(Op::USBhandlecheck, nullptr, nullptr) != kStatusOk) {
    g.replaceInStatusPanel1(glob::kBoardConnected, glob::kBoardNotConnected);
    return kStatusNoBoard;
  }
  for (const ConfigStep& step : reconnectSteps(kind)) callOnce(d, step.op, step.request);
  g.replaceInStatusPanel1(glob::kBoardNotConnected, glob::kBoardConnected);
  return kStatusOk;
}

Reconnect reconnectWith(ReaderDriver& d, ReconnectKind kind) {
  return [&d, kind] { reconnectBoard(d, kind); };
}

void DEMO_TL42RQ_A_reconnect(ReaderDriver& d, std::int32_t& r) { r = reconnectBoard(d, ReconnectKind::Plain); }
void DEMO_TL42RQ_A_reconnect_Demokit_tools(ReaderDriver& d, std::int32_t& r) {
  r = reconnectBoard(d, ReconnectKind::Plain);
}
void DEMO_TL42RQ_A_reconnect_UserInterface(ReaderDriver& d, std::int32_t& r) {
  r = reconnectBoard(d, ReconnectKind::Plain);
}
void DEMO_TL42RQ_A_reconnect_script(ReaderDriver& d, std::int32_t& r) { r = reconnectBoard(d, ReconnectKind::Plain); }
void DEMO_TL42RQ_A_reconnect_script_iso14443A(ReaderDriver& d, std::int32_t& r) {
  r = reconnectBoard(d, ReconnectKind::Script14443A);
}
void DEMO_TL42RQ_A_reconnect_script_iso14443B(ReaderDriver& d, std::int32_t& r) {
  r = reconnectBoard(d, ReconnectKind::Script14443B);
}
void DEMO_TL42RQ_A_reconnect_iso15693(ReaderDriver& d, std::int32_t& r, int fastMode) {
  r = reconnectBoard(d, fastMode == 0 ? ReconnectKind::Iso15693 : ReconnectKind::Iso15693Fast);
}
void DEMO_TL42RQ_A_reconnect_iso14443A(ReaderDriver& d, std::int32_t& r) {
  r = reconnectBoard(d, ReconnectKind::Iso14443A);
}
void DEMO_TL42RQ_A_reconnect_iso14443A_TOPAZ(ReaderDriver& d, std::int32_t& r) {
  r = reconnectBoard(d, ReconnectKind::Iso14443ATopaz);
}
void DEMO_TL42RQ_A_reconnect_iso14443B(ReaderDriver& d, std::int32_t& r, bool panelText) {
  r = reconnectBoard(d, panelText ? ReconnectKind::Iso14443BPanel : ReconnectKind::Iso14443BTools);
}
void DEMO_TL42RQ_A_reconnect_iso18092(ReaderDriver& d, std::int32_t& r) {
  r = reconnectBoard(d, ReconnectKind::Iso18092);
}
void DEMO_TL42RQ_A_reconnect_Felica(ReaderDriver& d, std::int32_t& r) {
  r = reconnectBoard(d, ReconnectKind::Iso18092);
}

}  // namespace reader
