// The ISO 14443-B panel. It has two faces, chosen by the product when it opens: the
// standard REQB, WUPB and ATTRIB with their answer labels, or the commands of the PDX51
// to PDY55 family with the slot inventory and block memory through the shared page view.
// Both faces send free frames. The panel builds text, sends it, traces both directions
// and cuts the answers; it keeps no idea of the tag's state.
#pragma once

#include <QSize>
#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "iso14443b/Iso14443BFrames.h"
#include "shell/ui/Panel.h"

class QCheckBox;
class QFrame;
class QGroupBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QTableWidget;
class HexLineEdit;
class FrameLineEdit;
class MemoryPageView;

class frmTL42RQ_ISO14443B_UI : public Panel {
  Q_OBJECT
 public:
  explicit frmTL42RQ_ISO14443B_UI(QWidget* parent = nullptr);
  ~frmTL42RQ_ISO14443B_UI() override;

  // The panel's public reconnect method (with the blank in its KQCmd text).
  void DEMO_TL42RQ_A_reconnect_iso14443B(std::int32_t& status);

  // --- handlers, one per control event --------------------------------------------------
  void cmd_ISO14443B_ReqB_Click();
  void cmd_ISO14443B_WupB_Click();
  void chkReqBWupBLoop_Click();
  void cmd_ISO14443B_Attrib_Click();
  void cmd_ISO14443B_SendFrame_Click();

  void cmd_ISO14443B_Initiate_Click();
  void cmd_ISO14443B_Pcall16_Click();
  void cmd_ISO14443B_SlotMarker_Click();
  void cmd_ISO14443B_Select_Click();
  void cmd_ISO14443B_Completion_Click();
  void cmd_ISO14443B_ResetToInventory_Click();
  void cmd_ISO14443B_GetUID_Click();

  void cmd_ISO14443B_Anticollision_Click();
  void chkAnticollisionLoop_Click();

  void cmd_ISO14443B_Read_Click();
  void cmd_ISO14443B_Write_Click();
  void cmdWriteUser_Click();
  void cmdCancelWriteTest_Click();
  void cmdStopCommand_Click();

  void setCommandsEnabled(bool enabled);
  // The size the main window gives the panel when it opens.
  QSize sizeHint() const override { return {1100, 820}; }
  MemoryPageView* pageView() const { return pageView_; }

  // --- controls ---------------------------------------------------------------------------
  std::array<QLabel*, 3> lbl_title_ISO14443B{};  // index 2 is the title; 0 and 1 are not built

  // Standard face.
  QGroupBox* Fra_14443B_ReqBWupB = nullptr;
  QPushButton* cmd_ISO14443B_ReqB = nullptr;
  QPushButton* cmd_ISO14443B_WupB = nullptr;
  QLabel* lblRegB_N = nullptr;
  std::array<HexLineEdit*, 3> txt_ISO14443B_ReqB_SN{};
  QLabel* lblRegB_afi = nullptr;
  HexLineEdit* txt_iso14443B_reqB_afi = nullptr;
  QCheckBox* chkReqBWupBLoop = nullptr;
  QGroupBox* frmREQB_WUPB_answer = nullptr;
  QLabel* lblReqBanswer = nullptr;
  QLabel* lblReqBanswer_FirstByte = nullptr;
  QLabel* lblReqBanswer_Pupi = nullptr;
  QLabel* lblReqBanswer_ApplicationData = nullptr;
  QLabel* lblReqBanswer_ProtocolInfo = nullptr;
  QLabel* lblReqBanswer_Crc = nullptr;
  QPushButton* cmd_ISO14443B_Attrib = nullptr;
  QLabel* lblAttriBrequest_Pupi = nullptr;
  HexLineEdit* txtAttriBrequest_Pupi = nullptr;
  QLabel* lblAttriBrequest_autorizedRespTime = nullptr;
  HexLineEdit* txtAttriBrequest_autorizedRespTime = nullptr;
  QLabel* lblAttriBrequest_MaxFrameSize = nullptr;
  HexLineEdit* txtAttriBrequest_MaxFrameSize = nullptr;
  QLabel* lblAttriBrequest_ISO14443compliant = nullptr;
  HexLineEdit* txtAttriBrequest_ISO14443compliant = nullptr;
  QLabel* lblAttriBrequest_CID = nullptr;
  HexLineEdit* txtAttriBrequest_CID = nullptr;
  QLabel* lblAttriBanswer = nullptr;
  QLabel* lblAttriBanswer_MBLI_CID = nullptr;
  QLabel* lblAttriBanswer_Crc = nullptr;

  // Family face: commands.
  QGroupBox* Frame1 = nullptr;
  QPushButton* cmd_ISO14443B_Initiate = nullptr;
  QPushButton* cmd_ISO14443B_Pcall16 = nullptr;
  QPushButton* cmd_ISO14443B_SlotMarker = nullptr;
  QPushButton* cmd_ISO14443B_Select = nullptr;
  QPushButton* cmd_ISO14443B_Completion = nullptr;
  QPushButton* cmd_ISO14443B_ResetToInventory = nullptr;
  QPushButton* cmd_ISO14443B_GetUID = nullptr;
  QLabel* lblISO1443B_ChipID = nullptr;
  HexLineEdit* txt_ISO14443B_ChipID = nullptr;
  QLabel* lblSN = nullptr;
  std::array<HexLineEdit*, 4> txt_ISO14443B_SN{};
  QLabel* lblISO1443B_UID = nullptr;
  QLineEdit* txt_ISO14443B_UID = nullptr;

  // Family face: slot inventory.
  QGroupBox* FraAnticol = nullptr;
  QPushButton* cmd_ISO14443B_Anticollision = nullptr;
  QCheckBox* chkAnticollisionLoop = nullptr;
  QTableWidget* fgISO14443Banticol = nullptr;
  QLabel* lblAnticolUID = nullptr;
  QLineEdit* txtAnticolUID = nullptr;

  // Family face: memory.
  QLabel* lblUserAddress = nullptr;
  QGroupBox* FraAddressRow = nullptr;
  QLabel* lblUsrAddLow = nullptr;
  QLabel* lblUsrAddHigh = nullptr;
  std::array<HexLineEdit*, 2> txtUserAddress{};
  QPushButton* cmd_ISO14443B_Read = nullptr;
  QPushButton* cmd_ISO14443B_Write = nullptr;
  QPushButton* cmdStopCommand = nullptr;

  // Both faces.
  FrameLineEdit* txt_ISO14443B_AnyFrame = nullptr;
  QPushButton* cmd_ISO14443B_SendFrame = nullptr;
  QLabel* lbl_ISO14443B_request = nullptr;
  QLineEdit* txt_ISO14443B_request = nullptr;
  QLabel* lbl_ISO14443B_answer = nullptr;
  QLineEdit* txt_ISO14443B_answer = nullptr;

 protected:
  reader::ReconnectKind reconnectKind() const override { return reader::ReconnectKind::Iso14443BPanel; }
  void clearFlagsOnClose() override;
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  void buildControls();
  void buildStandardFace(QWidget* parent);
  void buildFamilyFace(QWidget* parent);
  void load();
  void chooseFace(bool standard);

  // One Send Receive exchange: send, show frame and answer, trace under the title.
  // Returns the answer as its box holds it.
  std::string sendFrame(const std::string& title, const std::string& frame);
  // The same when the request box already holds the frame: the trace reads it from there.
  std::string sendFrameFromRequestBox(const std::string& title, const std::string& frame);
  std::string showAnswer(const reader::Answer& a);

  void reqbWupbLoop(bool wakeUp);
  void familyCommand(iso14443b::FamilyCommand c);
  void writeCellLabels();
  void setCell(int k, const std::string& text);

  bool checkAddressBoxes();
  long addressBoxValue(int index) const;
  int addressBoxWidth() const;
  void setAddressBoxesReadOnly(bool first, bool second);
  void setBusy(bool busy);

  MemoryPageView* pageView_ = nullptr;
  std::vector<QWidget*> commandWidgets_;
  bool busy_ = false;
};
