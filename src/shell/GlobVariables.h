// The program's shared state. It has no owner: panels read and write it directly, as
// one interactive program with one thread can afford. Truth values are plain bools.
#pragma once

#include <array>
#include <functional>
#include <string>

namespace glob {

// The panels that have an open flag, in the order the menus know them.
enum class PanelId {
  UserInterface,       // frmTL42RQ_UserInterface
  ISO15693,            // frmTL42RQ_ISO15693_UI
  ISO14443A,           // frmTL42RQ_ISO14443A_UI
  ISO14443B,           // frmTL42RQ_ISO14443B_UI
  ISO18092,            // frmTL42RQ_ISO18092_UI
  DemoKitTools,        // frmTL42RQ_DemoKit_tools
  Script,              // frmTL42RQ_Script
  ScriptHelp,          // frmScriptHelp
  TagDetection,        // frmTL42RQ_TagDetection_UI
  AutoDetect,          // frmTL42RQ_AutoDetectTool_UI
  MementoFile,         // frmMementoFile
  About,               // frmAbout
  Count
};

// The two board texts of status-bar panel 1; reconnect swaps one for the other.
inline constexpr const char* kBoardConnected = " DEMO-TL42RQ-A BOARD CONNECTED";
inline constexpr const char* kBoardNotConnected = " DEMO-TL42RQ-A BOARD NOT CONNECTED";

struct GlobVariables {
  std::array<bool, static_cast<std::size_t>(PanelId::Count)> panelOpen{};

  // Stop and loop flags.
  bool stopFlag = false;               // the tag discovery tools
  bool stopRequested = false;          // memory panels
  bool transferRunning = false;
  bool autoLoopActive = false;
  int writeMode = 0;
  bool scriptLoop = false;
  bool iso18092ReqcLoop = false;
  bool iso14443bReqbLoop = false;
  bool iso14443bWupbLoop = false;
  bool iso14443bAnticolLoop = false;  // the ISO 14443-B panel's slot inventory loop

  // Detection results.
  int dllRevision = 0;
  std::string mcuRevision;
  std::string chipIdentification;
  bool detectionPending = false;
  bool notDetected = false;

  // Preferences (usage file).
  std::string lastDirectory;
  std::string backgroundColor;

  // The ISO 14443-A modulation and gain value that every ISO 14443-A configuration sends.
  std::string iso14443AModulationGain = "D1";
  // The script's saved chip identification.
  std::string scriptChipId = "00";
  // Which protocol the Protocol Select builder shows; 99 for none.
  int currentProtocolCode = 99;

  // ISO 15693 panel.
  std::string transponderUIDFrame;
  int rfAddressBytes = 1;
  int iso15693RequestFlags = 0;  // base of every ISO 15693 flags byte
  int currentTab = 0;

  // Status-bar panel 1 of the main window, and who shows it.
  std::string statusPanel1;
  std::function<void(const std::string&)> statusPanel1Changed;
  void setStatusPanel1(std::string text) {
    statusPanel1 = std::move(text);
    if (statusPanel1Changed) statusPanel1Changed(statusPanel1);
  }
  // Replaces the first occurrence of `from` by `to` in panel 1; nothing when absent.
  void replaceInStatusPanel1(const std::string& from, const std::string& to);
};

GlobVariables& state();
inline bool& panelOpen(PanelId id) { return state().panelOpen[static_cast<std::size_t>(id)]; }

}  // namespace glob
