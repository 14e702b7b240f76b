// The ISO 15693 panel: tag commands one at a time through the TL42RQ, inventory and the
// controller's anticollision, block reads and writes over address ranges with the page
// view, AUTO LOOP and STOP. It builds text, sends it, traces both directions and
// explains the answer; it keeps no idea of the tag's state.
#pragma once

#include <QPointer>
#include <array>
#include <functional>
#include <optional>
#include <string>

#include "iso15693/Iso15693Answers.h"
#include "iso15693/Iso15693Frames.h"
#include "shell/ui/Panel.h"

class QButtonGroup;
class QCheckBox;
class QFrame;
class QGroupBox;
class QLabel;
class QLineEdit;
class QListWidget;
class QListWidgetItem;
class QProgressBar;
class QPushButton;
class QRadioButton;
class QTabBar;
class HexLineEdit;
class FrameLineEdit;
class MemoryPageView;
class ClickableLabel;

class frmTL42RQ_ISO15693_UI : public Panel {
  Q_OBJECT
 public:
  explicit frmTL42RQ_ISO15693_UI(QWidget* parent = nullptr);
  ~frmTL42RQ_ISO15693_UI() override;

  // What the panel does where it cannot go on (a reference without a row of the table
  // of products, a data rate with no option on): the program ends. Tests replace it.
  static void setApplicationEnd(std::function<void()> end);

  // --- public operations of the panel -------------------------------------------------
  void DEMO_TL42RQ_A_reconnect_iso15693(int mode, std::int32_t& status);
  static std::string CRC16_calculation(const std::vector<std::uint8_t>& bytes);

  // --- handlers, one per control event ------------------------------------------------
  void cmd_ISO15693_SendFrame_Click();
  void cmdInventory_Click();
  void cmdAntiCollisionIso15693_Click();
  void chkLoop_Click();
  void lstTransponderUID_Click();
  void txtTransponderUID_LostFocus();
  void lblChoosenTag_Click();
  void txtInventoryOptionalAFI_LostFocus();
  void txtInventoryMaskValue_LostFocus(int index);
  void txtInventoryMaskLenght_LostFocus();
  void updateMaskFields();
  void tabStripchoice_Click(int newIndex);

  void cmdReadUser_Click();
  void cmdReadMultipleBlock_Click();
  void cmdGetMultipleBlockSecurityStatus_Click();
  void cmdLockBlock_Click();
  void cmdStopCommand_Click();
  void chkUserLoop_Click();
  void txtLOOPnumber_LostFocus();
  void cmdWriteUser_Click();
  void cmdCancelWriteTest_Click();
  // The openers of the write grid, by write mode.
  void cmdWriteSingleBlock_Click();
  void cmdWriteAFI_Click();
  void cmdWriteDSFID_Click();
  void cmdWriteKill_Click();
  void cmdKill_Click();
  void cmdWriteSectorPassword_Click();
  void cmdLockSectorPassword_Click();
  void cmdPresentSectorPassword_Click();

  // Tag-state commands that share the opening of a loop handler.
  void cmdSelect_Click();
  void cmdResetToReady_Click();
  void cmdStayQuiet_Click();
  void cmdLockAFI_Click();
  void cmdLockDSFID_Click();

  // System information and the custom commands of the tag families.
  void cmdGetSystemInfo_Click();
  void cmdInitiate_Click();
  void cmdInventoryInitiated_Click();
  void cmdFastInitiate_Click();
  void cmdFastInventoryInitiated_Click();
  void cmdFastReadSingleBlock_Click();
  void cmdFastReadMultipleBlock_Click();
  void cmdLockKill_Click();
  void cmdReadEHconfig_Click();
  void cmdCheckEHenable_Click();
  void cmdWriteEHCfg_Click();
  void cmdSetEHenable_Click();
  void cmdResetEHenable_Click();
  void cmdWriteDOconfig_Click();
  void txtEHconfig_LostFocus();
  void txtWriteDOconfig_LostFocus();

  // Routines without a control, kept in the panel's method list.
  void readMultipleBlockOneRequest();
  void readWholeMemorySingle();

  void setCommandsEnabled(bool enabled);

  // --- exchange routines (Parts of the frame table) ------------------------------------
  int sendReadSingleBlock(long& address, long count, int pageSize, int width);
  int sendReadMultipleBlock(long address, long count, int pageSize, int width);
  int sendGetMultipleBlockSecurityStatus(long address, long count, int width);
  int sendWriteSingleBlock(long address, const std::string& data, int pageSize, int width);
  void sendLockBlock(long address, int width);
  int sendSelect(const std::string& uid);
  int sendResetToReady(const std::string& uid);
  int sendStayQuiet(const std::string& uid);
  int sendWriteAFI(const std::string& data);
  int sendLockAFI();
  int sendWriteDSFID(const std::string& data);
  int sendLockDSFID();
  int sendWriteKill(const std::string& data);
  int sendKill(const std::string& data);
  int sendWriteSectorPassword(int passwordNumber, const std::string& data);
  int sendPresentPassword(int passwordNumber, const std::string& data);
  int sendLockSectorPassword(long block, int width, const std::string& data);
  int sendFastInitiate(std::int32_t& status);
  int sendFastInventoryInitiated(std::int32_t& status);
  int sendFastReadSingleBlock(long& address, long count, int pageSize, int width);
  int sendFastReadMultipleBlock(long address, long count, int pageSize, int width);
  int sendWriteEHConfig(const std::string& data);
  int sendSetResetEHConfig(const std::string& data);
  int sendWriteDOConfig(const std::string& data);

  // The tag response of the last exchange (empty when its answer was not cut).
  const std::string& tagResponse() const { return tagResponse_; }
  bool inventoryLoop() const { return inventoryLoop_; }
  MemoryPageView* pageView() const { return pageView_; }

 protected:
  reader::ReconnectKind reconnectKind() const override { return reader::ReconnectKind::Iso15693; }
  void clearFlagsOnClose() override;
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  void buildControls();
  void load();
  bool applyProductTable();

  // Where the tag response of an exchange starts: empty, so that the command is judged
  // by its own answer alone; or, inside the inventory loop, the previous pass's response.
  enum class ResponseStart { Empty, Previous };
  // One Send Receive exchange of the panel: send, show, trace, cut, yield. Returns the
  // length of the tag response in characters.
  int sendFrame(const std::string& title, const std::string& frame, ResponseStart start = ResponseStart::Empty);
  // The same with the status of the exchange and the reconnect mode: 0 selects "010D"
  // again after a lost board, any other "011D" (the fast commands).
  int sendFrame(const std::string& title, const std::string& frame, int reconnectMode, std::int32_t& status);
  // Shows request and answer, appends the trace entry, cuts the answer and yields.
  int showAndCut(const std::string& title, const std::string& frame, const reader::Answer& a, ResponseStart start);
  // The fast mode wrapper: the chip at the double data rate ("011D") and back ("010D").
  void enterFastMode();
  void leaveFastMode();
  // The inventory family's custom forms share one shape.
  int initiateExchange(const char* caption, const std::string& title, const std::string& frame, std::int32_t& status,
                       int reconnectMode);
  void inventoryInitiatedExchange(iso15693::InventoryCommand command, const char* caption, std::int32_t& status,
                                  int reconnectMode);
  // Read E.H. status and Check EH enable: the byte of the answer into its box.
  void readEhByte(iso15693::Command c, QLineEdit* box);
  void readSingleHandler(bool fast);
  void readMultipleHandler(bool fast);
  // The chip goes back to "010D" at every way out of a fast read, also the first.
  struct FastReadScope {
    frmTL42RQ_ISO15693_UI* panel;
    bool on;
    ~FastReadScope();
  };
  struct ReadRange {
    long start = 0;
    long count = 0;
  };
  // The opening both block-read handlers share: loop opening, grid closed, address
  // boxes checked, fast mode entered, the range written back and counted, the view
  // cleared. False when the boxes were wrong (the loop ending has run).
  bool openReadRange(bool fast, ReadRange& range);
  // A command of the table with the panel's flags; nullopt only for a broken panel.
  std::string frameOf(iso15693::Command c, const iso15693::FrameFields& fields);
  std::string flagsOf(iso15693::Command c, int width);
  iso15693::FlagControls flagControls() const;
  iso15693::InventoryControls inventoryControls() const;
  int dataRateIndex() const;
  // A state command: exchange, then lblWriteTime by the family's judgement.
  int sendStateCommand(iso15693::Command c, const iso15693::FrameFields& fields);
  void fillTransponderList(const std::vector<std::pair<std::string, iso15693::InventoryEntry>>& rows);
  void showInventoryResponse(const std::string& number);

  // Loop handlers.
  void loopOpening(bool readHandler);
  void loopEnding();
  void autoLoopStep();
  void setAddressBoxesLocked(bool locked);
  // Both address boxes through checkHexAddress; the message shows at the first failure.
  bool checkAddressBoxes();
  long addressBoxValue(int index) const;
  int addressBoxWidth() const;
  void writeBackRange(long start, long end);
  void openGrid(int writeMode, const char* caption, bool checkBoxes);
  int passwordNumber() const;
  void stateCommandHandler(int (frmTL42RQ_ISO15693_UI::*routine)(const std::string&));
  void lockAfiDsfidHandler(int (frmTL42RQ_ISO15693_UI::*routine)());
  void setBusy(bool busy);
  void endApplication();
  // The panel is gone or going: loops end at their next check.
  bool leaving() const { return closing(); }

  // --- controls ---------------------------------------------------------------------------
 public:
  QGroupBox* FraDataRate = nullptr;
  std::array<QRadioButton*, 4> optDataRate{};
  std::array<QCheckBox*, 2> chk_Select_Address_flag{};
  QCheckBox* chkLockBits = nullptr;
  QGroupBox* FraSystemInfo = nullptr;
  std::array<QRadioButton*, 2> optExtensionFlag{};
  QPushButton* cmdGetSystemInfo = nullptr;
  QListWidget* lstSystemInfo = nullptr;
  HexLineEdit* txtTransponderUID = nullptr;
  ClickableLabel* lblChoosenTag = nullptr;
  QLabel* lbl_ISO15693_request = nullptr;
  QLineEdit* txt_ISO15693_request = nullptr;
  QLabel* lbl_ISO15693_answer = nullptr;
  QLineEdit* txt_ISO15693_answer = nullptr;
  QLineEdit* txt_ISO15693_answer_FastProtocol = nullptr;
  QGroupBox* frmWriteTime = nullptr;
  QLabel* lblWriteTime = nullptr;
  QLabel* lblLoopCount = nullptr;
  QLabel* Label2 = nullptr;
  FrameLineEdit* txt_ISO15693_AnyFrame = nullptr;
  QPushButton* cmd_ISO15693_SendFrame = nullptr;
  QTabBar* tabStripchoice = nullptr;
  std::array<QFrame*, 4> fraMode{};  // index 1 and 2 are the tabs' pages, 3 is never shown

  // Inventory page.
  QGroupBox* FraInventoryOptions = nullptr;
  std::array<QRadioButton*, 2> optInventorySlot{};
  QCheckBox* chkInventoryAFIOptions = nullptr;
  HexLineEdit* txtInventoryOptionalAFI = nullptr;
  QGroupBox* FraInventoryParameters = nullptr;
  QLabel* lblInventoryMaskLenght = nullptr;
  HexLineEdit* txtInventoryMaskLenght = nullptr;
  QLabel* lblInventoryMaskValue = nullptr;
  std::array<HexLineEdit*, 8> txtInventoryMaskValue{};
  QCheckBox* chkLoop = nullptr;
  QPushButton* cmdInventory = nullptr;
  QPushButton* cmdAntiCollisionIso15693 = nullptr;
  QGroupBox* FraINVENTORYresponse = nullptr;
  QListWidget* lstTransponderUID = nullptr;
  QPushButton* cmdSelect = nullptr;
  QPushButton* cmdResetToReady = nullptr;
  QPushButton* cmdStayQuiet = nullptr;
  QPushButton* cmdInitiate = nullptr;
  QPushButton* cmdInventoryInitiated = nullptr;
  QPushButton* cmdFastInitiate = nullptr;
  QPushButton* cmdFastInventoryInitiated = nullptr;

  // User mode page.
  QLabel* lblUserAddress = nullptr;
  QLabel* lblUsrAddLow = nullptr;
  QLabel* lblUsrAddHigh = nullptr;
  std::array<HexLineEdit*, 2> txtUserAddress{};
  QPushButton* cmdReadUser = nullptr;
  QPushButton* cmdReadMultipleBlock = nullptr;
  QPushButton* cmdFastReadSingleBlock = nullptr;
  QPushButton* cmdFastReadMultipleBlock = nullptr;
  QPushButton* cmdWriteSingleBlock = nullptr;
  QPushButton* cmdLockBlock = nullptr;
  QPushButton* cmdGetMultipleBlockSecurityStatus = nullptr;
  QGroupBox* FraLoop = nullptr;
  QCheckBox* chkUserLoop = nullptr;
  HexLineEdit* txtLOOPnumber = nullptr;
  QLabel* lblLOOPnumber = nullptr;
  QPushButton* cmdStopCommand = nullptr;
  QGroupBox* FraAFI = nullptr;
  QPushButton* cmdWriteAFI = nullptr;
  QPushButton* cmdLockAFI = nullptr;
  QGroupBox* FraDSFID = nullptr;
  QPushButton* cmdWriteDSFID = nullptr;
  QPushButton* cmdLockDSFID = nullptr;
  QGroupBox* FraKill = nullptr;
  QPushButton* cmdWriteKill = nullptr;
  QPushButton* cmdLockKill = nullptr;
  QPushButton* cmdKill = nullptr;
  QGroupBox* FraPasswordRF = nullptr;
  QLabel* Label1 = nullptr;
  std::array<QRadioButton*, 3> OptPasswordNumber{};
  QPushButton* cmdWriteSectorPassword = nullptr;
  QPushButton* cmdLockSectorPassword = nullptr;
  QPushButton* cmdPresentSectorPassword = nullptr;
  QGroupBox* FraEnergyHarvesting = nullptr;
  QPushButton* cmdReadEHconfig = nullptr;
  QLineEdit* txtEHstatus = nullptr;
  QPushButton* cmdCheckEHenable = nullptr;
  QLineEdit* txtCheckEHenable = nullptr;
  QPushButton* cmdWriteEHCfg = nullptr;
  HexLineEdit* txtEHconfig = nullptr;
  QPushButton* cmdWriteDOconfig = nullptr;
  HexLineEdit* txtWriteDOconfig = nullptr;
  QPushButton* cmdSetEHenable = nullptr;
  QPushButton* cmdResetEHenable = nullptr;
  QProgressBar* ProgressBar1 = nullptr;

 private:
  MemoryPageView* pageView_ = nullptr;
  QButtonGroup* dataRateGroup_ = nullptr;
  std::string tagResponse_;
  bool inventoryLoop_ = false;
  bool readStopped_ = false;  // the last sendReadSingleBlock was ended by STOP
  bool fastReads_ = false;    // the block reads go out as their fast forms
  bool pageGridOpen_ = false;
  bool busy_ = false;
  std::vector<QWidget*> commandWidgets_;
};
