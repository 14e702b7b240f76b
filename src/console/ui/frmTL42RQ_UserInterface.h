// The chip command console: a person picks one chip command from the list, edits its
// frame byte by byte on the panel that serves it, sends it through KQCmd and reads the
// answer explained line by line. Three buttons beside the list pulse the board directly.
//
// Four frame panels share one place: the generic FraCommandCodeXX, driven by the command
// table, and FraCommandCode02 (Protocol Select), FraCommandCode07 (Idle) and
// FraCommandCode0D (anti-collision filter). Every send action goes through one routine.
#pragma once

#include <QString>
#include <array>
#include <map>
#include <string>
#include <vector>

#include "console/ChipCommands.h"
#include "console/ConsoleFrames.h"
#include "console/ProtocolSelect.h"
#include "console/ResponseAnalyser.h"
#include "shell/ui/Panel.h"

class FrameByteEdit;
class QCheckBox;
class QComboBox;
class QGroupBox;
class QLabel;
class QLineEdit;
class QRadioButton;

class frmTL42RQ_UserInterface : public Panel {
  Q_OBJECT
 public:
  explicit frmTL42RQ_UserInterface(QWidget* parent = nullptr);

  // --- handlers, one per control event ---
  void cboTL42RQ_CommandList_Click();
  // The list's handler on any entry text; the console also knows entries the list does
  // not offer (" 03 : Poll Field " and the others), and the code 0D.
  void selectCommandEntry(const QString& entry);
  // The entry of the table for a code (for 0D, which has none, the bare code).
  static QString entryOf(std::string_view code);

  void cmdSendCommandCodeXX_Click();
  void cmdSendCommandCode02_Click();
  void cmdSendCommandCode07_Click();
  void cmdSendCommandCode0D_Click();
  void cmdEcho_Click();
  void cmdSendIRQPulse_Click();
  void cmdNegativePulseOn_SPI_NSS_Click();

  void OptProtocolCode_Click(int index);
  void OptByte12optional_Click();
  void chkiso18092_SlotCounterByte1_Click();
  void parameterList_Click(const console::ParameterList& list, const QString& entry);
  void optIDLEframe_Click(int index);
  void optCmd08ReadRegister_Click(int index);
  void optCmd09WriteRegister_Click(int index);
  void chkCommandCode0FTimeIntervalOption_Click();
  void OptCommad0D_Click(int index);

  QString currentCommandEntry() const { return currentCommandEntry_; }
  const std::string& arcBValue() const { return arcBValue_; }

 private:
  struct ReplyBoxes {
    QLineEdit* request = nullptr;
    QLineEdit* answer = nullptr;
    std::vector<QLineEdit*> explain;
  };

  void buildGenericPanel();
  void buildProtocolSelectPanel();
  void buildIdlePanel();
  void buildFilterPanel();
  void buildSideFrames();
  QWidget* buildReplyBoxes(console::SendPanel panel, QWidget* parent, const QString& suffix);
  void buildIdleBitPanel(QWidget* parent);

  // Steps of a send action shared by the four panels, from the request box to the log.
  void sendRequest(console::SendPanel panel, const std::string& request);
  void clearReplies(console::SendPanel panel);
  void directButton(reader::Op op, QLineEdit* box);

  void storeCurrentCommand();
  void showGenericCommand(const chip::ChipCommand& command);
  void showWriteData();

  // Protocol Select helpers.
  console::Bits bitBoxes(int byte) const;
  void setBitBoxes(int byte, const console::Bits& bits);
  void writeByteFromBits(int byte);
  void frame02KeyUp(int box);
  void setFrame02Box(int box, const QString& text);
  void showFrame02Box(int box, bool shown);

  void genericBoxKeyUp(int box);
  void dataKeyUp();

  QComboBox* commandList_ = nullptr;
  QString currentCommandEntry_;
  std::map<std::string, console::CommandStore> stores_;
  std::string arcBValue_ = "00";
  std::array<console::Bits, console::kProtocolOptions> bitStores_;

  std::array<ReplyBoxes, 4> replies_;

  // Generic panel.
  QGroupBox* fraXX_ = nullptr;
  QLabel* titleXX_ = nullptr;
  std::array<FrameByteEdit*, chip::kGenericBoxes> boxXX_{};
  std::array<QLabel*, chip::kGenericBoxes> labelXX_{};
  FrameByteEdit* dataXX_ = nullptr;
  QLabel* dataLabelXX_ = nullptr;
  QLabel* valueLabel09_ = nullptr;
  QCheckBox* timeInterval0F_ = nullptr;
  QGroupBox* fra08_ = nullptr;
  std::array<QRadioButton*, 2> opt08_{};
  QGroupBox* fra09_ = nullptr;
  std::array<QRadioButton*, 4> opt09_{};
  QGroupBox* fraArcB_ = nullptr;
  QGroupBox* fraRegisterMap_ = nullptr;
  QGroupBox* fraBaudRate_ = nullptr;
  QLabel* uartNotice_ = nullptr;

  // Protocol Select panel.
  QGroupBox* fra02_ = nullptr;
  std::array<QRadioButton*, console::kProtocolOptions> optProtocol_{};
  std::array<FrameByteEdit*, console::kProtocolFrameBoxes> box02_{};
  std::array<QLabel*, console::kProtocolFrameBoxes> caption02_{};
  std::vector<QWidget*> frame02Shown_;  // boxes, send button, request and answer with labels
  QGroupBox* fraByte0_ = nullptr;
  QLabel* labelByte0_ = nullptr;
  std::array<FrameByteEdit*, 8> bits0_{};
  FrameByteEdit* byte0_ = nullptr;
  QGroupBox* fraByte1_ = nullptr;
  QCheckBox* slotCounter_ = nullptr;
  std::array<FrameByteEdit*, 8> bits1_{};
  FrameByteEdit* byte1_ = nullptr;
  QGroupBox* fraByte12_ = nullptr;
  QCheckBox* optional12_ = nullptr;
  QLabel* lblByte1_ = nullptr;
  QLabel* lblByte2_ = nullptr;
  std::array<FrameByteEdit*, 2> byte12_{};
  std::map<std::string, QComboBox*> lists_;
  std::map<std::string, QWidget*> listRows_;

  // Idle panel.
  QGroupBox* fra07_ = nullptr;
  std::array<FrameByteEdit*, chip::kIdleFrameBytes> box07_{};
  std::array<QRadioButton*, console::kIdleExamples.size()> optIdle_{};
  QGroupBox* fraIdleBits_ = nullptr;

  // Filter panel.
  QGroupBox* fra0D_ = nullptr;
  std::array<FrameByteEdit*, console::kFilterFrameBoxes> box0D_{};
  std::array<QRadioButton*, console::kFilterOptions.size()> opt0D_{};
  std::array<QLabel*, 4> label0D_{};
  std::array<QLabel*, 3> uidLevel_{};

  // Direct buttons.
  QLineEdit* echoAnswer_ = nullptr;
  QLineEdit* irqAnswer_ = nullptr;
  QLineEdit* nssAnswer_ = nullptr;
};
