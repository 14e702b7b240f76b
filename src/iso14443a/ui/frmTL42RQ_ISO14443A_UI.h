// The ISO 14443-A panel: single activation commands, the anticollision process, memory
// reads and writes through the shared page view, the TOPAZ commands, and the NDEF read.
// It sends fixed frames, shows what came back, cuts answers into boxes and keeps no idea
// of the tag's state; only the anticollision process carries one answer into the next
// frame.
#pragma once

#include <QPointer>
#include <array>
#include <string>

#include "iso14443a/Iso14443AFrames.h"
#include "shell/ui/Panel.h"

class QCheckBox;
class QFrame;
class QGroupBox;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;
class QTableWidget;
class HexLineEdit;
class FrameLineEdit;
class MemoryPageView;

class frmTL42RQ_ISO14443A_UI : public Panel {
  Q_OBJECT
 public:
  explicit frmTL42RQ_ISO14443A_UI(QWidget* parent = nullptr);
  ~frmTL42RQ_ISO14443A_UI() override;

  iso14443a::Variant variant() const { return variant_; }

  // --- public operations ----------------------------------------------------------------
  void DEMO_TL42RQ_A_reconnect_iso14443A(std::int32_t& status);
  void DEMO_TL42RQ_A_reconnect_iso14443A_TOPAZ(std::int32_t& status);
  void setCommandsEnabled(bool enabled);

  // --- handlers, one per control event ----------------------------------------------------
  void cmd_ISO14443A_REQA_Click();
  void cmd_ISO14443A_WUPA_Click();
  void cmd_ISO14443A_HALT_Click();
  void cmd_ISO14443A_Anticol_Click(int index);
  void cmd_ISO14443A_Select_Click(int index);
  void cmd_ISO14443A_SendFrame_Click();
  void txt_ISO14443A_transFlag_LostFocus();
  void cmd_ISO14443A_Anticol_Process_Click();
  void cmd_ISO14443A_TOPAZ_REQA_Click();
  void cmd_ISO14443A_TOPAZ_RID_Click();
  void cmd_ISO14443A_Read_Click();
  void cmd_ISO14443A_Write_Click();
  void cmd_ISO14443A_Write_compatibility_Click();
  void cmd_ISO14443A_TOPAZ_Write_E_Click();
  void cmd_ISO14443A_TOPAZ_Write_NE_Click();
  void cmdWriteUser_Click();
  void cmdCancelWriteTest_Click();
  void cmdStopCommand_Click();
  void cmdReadNdefIso1443A_Click();

  // --- routines of the panel ------------------------------------------------------------
  void showTransmissionFlag(const std::string& flag);
  void clearAnswerAnalysis();
  void fillAnswerAnalysis();
  // Pages (or TOPAZ bytes) added to memoryBuffer; `address` is advanced by the reading.
  int readMemoryBlocks(long& address, long count, int pageSize, int addressBytes);
  // One page (or byte) by the write mode; the row of its outcome goes to memoryBuffer.
  int writeMemoryPage(long address, const std::string& data, int pageSize, int addressBytes);
  std::string readNdefBlock(int page);
  void decodeNdefMessage(const std::string& memory);

  MemoryPageView* pageView() const { return pageView_; }

 protected:
  reader::ReconnectKind reconnectKind() const override;
  void clearFlagsOnClose() override;
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  void buildControls();
  void load();
  void applyVariant();
  // One Send Receive with the reconnect of this kind; shows request and answer and writes
  // the titled trace entry. Returns the answer as its box holds it.
  std::string sendFrame(reader::ReconnectKind kind, const std::string& title, const std::string& frame);
  std::string showAnswer(const reader::Answer& a);
  void singleCommand(iso14443a::Single c, int index);
  void topazActivation(bool rid);
  void openWriteGrid(int writeMode, const char* pageSize, const char* caption);
  bool checkAddressBoxes();
  long addressBoxValue(int index) const;
  int addressBoxWidth() const;
  void setAddressBoxesReadOnly(bool readOnly);
  void setBusy(bool busy);
  void writeGridRow(const iso14443a::StageRow& row, const std::string& request, const std::string& answer);
  void clearAnticolGrid();
  std::string transFlagText() const;
  std::string answerText() const;

 public:
  // --- controls -----------------------------------------------------------------------------
  std::array<QLabel*, 3> lbl_title_ISO14443A{};  // index 2 carries the title
  QGroupBox* fraISO14443A_TL42RQ_TransmissionFlag = nullptr;
  QLabel* lbl_ISO14443A_transFlag = nullptr;
  HexLineEdit* txt_ISO14443A_transFlag = nullptr;
  std::array<QCheckBox*, 8> chk_TL42RQ_transmission_flag{};
  QPushButton* cmd_ISO14443A_REQA = nullptr;
  QPushButton* cmd_ISO14443A_WUPA = nullptr;
  QPushButton* cmd_ISO14443A_HALT = nullptr;
  std::array<QPushButton*, 3> cmd_ISO14443A_Anticol{};
  std::array<QPushButton*, 3> cmd_ISO14443A_Select{};
  QLineEdit* txtISO14443A_Anticol_Arg = nullptr;
  QLabel* lblISO14443A_DataForSelect = nullptr;
  QLineEdit* txtUIDforSelect123 = nullptr;
  std::array<QFrame*, 3> Line{};  // the three divider lines
  QPushButton* cmd_ISO14443A_TOPAZ_REQA = nullptr;
  QPushButton* cmd_ISO14443A_TOPAZ_RID = nullptr;
  QLabel* lblHR0_TOPAZ = nullptr;
  QLineEdit* txtHR0_TOPAZ = nullptr;
  QLabel* lblHR1_TOPAZ = nullptr;
  QLineEdit* txtHR1_TOPAZ = nullptr;
  QLabel* lblUID_TOPAZ = nullptr;
  HexLineEdit* txtUID_cmdSelect = nullptr;
  QPushButton* cmd_ISO14443A_TOPAZ_Write_E = nullptr;
  QPushButton* cmd_ISO14443A_TOPAZ_Write_NE = nullptr;

  FrameLineEdit* txt_ISO14443A_AnyFrame = nullptr;
  QPushButton* cmd_ISO14443A_SendFrame = nullptr;
  QLabel* lbl_ISO14443A_request = nullptr;
  QLineEdit* txt_ISO14443A_request = nullptr;
  QLabel* lbl_ISO14443A_answer = nullptr;
  QLineEdit* txt_ISO14443A_answer = nullptr;

  QGroupBox* fraISO14443A_answer_analysis = nullptr;
  std::array<QLabel*, 6> lblISO14443A_answer_analysis{};
  std::array<QLabel*, 6> lblAnswerAnalysis{};
  std::array<QCheckBox*, 8> chk_respflag{};

  QGroupBox* FraAnticolRoutine = nullptr;
  QPushButton* cmd_ISO14443A_Anticol_Process = nullptr;
  QTableWidget* fgAnticolProcess = nullptr;
  QLabel* lblUID = nullptr;
  QLineEdit* txtAnticolisionProcessUID = nullptr;

  QGroupBox* FraAddressRow = nullptr;
  std::array<HexLineEdit*, 2> txtUserAddress{};
  QPushButton* cmd_ISO14443A_Read = nullptr;
  QPushButton* cmd_ISO14443A_Write = nullptr;
  QPushButton* cmd_ISO14443A_Write_compatibility = nullptr;
  QPushButton* cmdStopCommand = nullptr;

  QGroupBox* FraNDEFiso14443A = nullptr;
  QPushButton* cmdReadNdefIso1443A = nullptr;
  QPlainTextEdit* txtNDEFmessage = nullptr;
  QLabel* lblDetectedUrl = nullptr;
  QLabel* lblInternetLink = nullptr;

 private:
  iso14443a::Variant variant_ = iso14443a::Variant::Normal;
  MemoryPageView* pageView_ = nullptr;
  bool busy_ = false;
};
