// What the two discovery tools share: the protocol boxes, the probes' result boxes and
// buttons, the request and answer boxes, the lamps and the result label. Each tool runs
// the same probes (discovery/Probes.h) on itself as their host.
#pragma once

#include <array>
#include <string>

#include "discovery/Cycles.h"
#include "discovery/Probes.h"
#include "reader/Drivers.h"
#include "shell/ui/Panel.h"

class QCheckBox;
class QGroupBox;
class QLabel;
class QLineEdit;
class QPushButton;
class ShapeMark;

class DiscoveryPanel : public Panel, public discovery::ProbeHost {
  Q_OBJECT
 public:
  // `requestName` and `answerName` name the tool's request and answer boxes;
  // `firstSlotIndex` is the index of the slot boxes' control array that slot 1 has.
  DiscoveryPanel(glob::PanelId id, const QString& name, discovery::ProbeOptions options, const QString& requestName,
                 const QString& answerName, int firstSlotIndex, QWidget* parent);

  // The probe buttons: each runs its probe alone, traced and without configuration, so
  // that it relies on the protocol selected last.
  void cmdISO15693_AntiCollision_Click();
  void cmdISO14443A_AntiCollision_Click();
  void cmdISO14443B_AntiCollision_Click();
  void cmdFelica_AntiCollision_Click();

  // The reconnect routines the tools use, by their names.
  void DEMO_TL42RQ_A_reconnect(std::int32_t& status);
  void DEMO_TL42RQ_A_reconnect_iso15693(std::int32_t& status, int fastMode);
  void DEMO_TL42RQ_A_reconnect_iso14443A(std::int32_t& status);
  void DEMO_TL42RQ_A_reconnect_iso14443B(std::int32_t& status);
  void DEMO_TL42RQ_A_reconnect_Felica(std::int32_t& status);

  // ProbeHost.
  reader::TraceLog& trace() override { return log(); }
  void showRequest(const std::string& text) override;
  std::string showAnswer(const std::string& text) override;
  std::string resultBox(discovery::ResultBox box) const override;
  void setResultBox(discovery::ResultBox box, const std::string& text) override;
  std::string slotBox(int slot) const override;
  void setSlotBox(int slot, const std::string& text) override;
  void yield() override { yieldEvents(1); }

  std::array<QCheckBox*, discovery::kProtocolCount> chkTagDetSelectProtocols{};
  std::array<ShapeMark*, 2> ShapTagDetected{};
  QLabel* lblTagDetected = nullptr;
  QLabel* lblTagDetection_result = nullptr;
  QLineEdit* txtISO15693DetectTags = nullptr;
  QLineEdit* txtISO14443ADetectTags = nullptr;
  QLineEdit* txt_ISO14443B_REQB_result = nullptr;
  std::array<QLineEdit*, discovery::kSlotCount> txt_ISO14443B_anticollision_result{};  // slot 1 first
  QLineEdit* txtFelicaDetectTags = nullptr;
  QPushButton* cmdISO15693_AntiCollision = nullptr;
  QPushButton* cmdISO14443A_AntiCollision = nullptr;
  QPushButton* cmdISO14443B_AntiCollision = nullptr;
  QPushButton* cmdFelica_AntiCollision = nullptr;
  QLineEdit* requestBox = nullptr;
  QLineEdit* answerBox = nullptr;

 protected:
  discovery::Probes probes() { return discovery::Probes(reader::driver(), *this, options_); }
  QGroupBox* buildProtocolBoxes(const QString& title, const QString& note);
  QWidget* buildLamps();
  QGroupBox* buildResults(const QString& title);
  QWidget* buildRequestAnswer();
  // Lamp 1 and the label: "Detected Tag" in blue, or "No Detected Tag" in the window text
  // colour with lamp 1 hidden.
  void showDetected(bool detected);
  // Cuts the slot boxes back to their numbers.
  void resetSlots();
  int tickedProtocols() const;
  bool ticked(int index) const;

 private:
  QLineEdit* resultLine(const QString& name);
  discovery::ProbeOptions options_;
  int firstSlotIndex_;
};

// Text between the boxes and the trace: Latin-1 both ways, as the board speaks.
QString latin1(const std::string& s);
std::string boxText(const QLineEdit* e);
