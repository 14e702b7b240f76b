#include "discovery/ui/DiscoveryPanel.h"

#include <QApplication>
#include <QCheckBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include "discovery/Cycles.h"
#include "discovery/TextCut.h"
#include "discovery/ui/ShapeMark.h"
#include "reader/Drivers.h"

using discovery::ResultBox;

QString latin1(const std::string& s) { return QString::fromLatin1(s.data(), static_cast<int>(s.size())); }
std::string boxText(const QLineEdit* e) { return e->text().toLatin1().toStdString(); }

DiscoveryPanel::DiscoveryPanel(glob::PanelId id, const QString& name, discovery::ProbeOptions options,
                               const QString& requestName, const QString& answerName, int firstSlotIndex,
                               QWidget* parent)
    : Panel(id, name, parent), options_(options), firstSlotIndex_(firstSlotIndex) {
  requestBox = new QLineEdit(this);
  requestBox->setObjectName(requestName);
  requestBox->setReadOnly(true);
  answerBox = new QLineEdit(this);
  answerBox->setObjectName(answerName);
  answerBox->setReadOnly(true);
}

QLineEdit* DiscoveryPanel::resultLine(const QString& name) {
  auto* e = new QLineEdit(this);
  e->setObjectName(name);
  e->setReadOnly(true);
  return e;
}

QGroupBox* DiscoveryPanel::buildProtocolBoxes(const QString& title, const QString& note) {
  auto* group = new QGroupBox(title, this);
  group->setObjectName("fraSelectProtocols");
  auto* layout = new QVBoxLayout(group);
  for (int i = 0; i < discovery::kProtocolCount; ++i) {
    auto* box = new QCheckBox(discovery::kProtocolCaptions[static_cast<std::size_t>(i)], group);
    box->setObjectName(QString("chkTagDetSelectProtocols_%1").arg(i));
    chkTagDetSelectProtocols[static_cast<std::size_t>(i)] = box;
    layout->addWidget(box);
  }
  auto* hint = new QLabel(note, group);
  hint->setObjectName("lblSelectProtocolsNote");
  hint->setWordWrap(true);
  layout->addWidget(hint);
  layout->addStretch(1);
  return group;
}

QWidget* DiscoveryPanel::buildLamps() {
  auto* holder = new QWidget(this);
  auto* layout = new QGridLayout(holder);
  layout->setContentsMargins(0, 0, 0, 0);
  // Lamp 1 lies on lamp 0: when it shows, it covers the neutral one.
  ShapTagDetected[0] = new ShapeMark("ShapTagDetected_0", ShapeMark::neutral(), holder);
  ShapTagDetected[1] = new ShapeMark("ShapTagDetected_1", ShapeMark::green(), holder);
  layout->addWidget(ShapTagDetected[0], 0, 0);
  layout->addWidget(ShapTagDetected[1], 0, 0);
  return holder;
}

QGroupBox* DiscoveryPanel::buildResults(const QString& title) {
  auto* group = new QGroupBox(title, this);
  group->setObjectName("fraResult");
  auto* grid = new QGridLayout(group);

  auto* top = new QHBoxLayout;
  top->addWidget(buildLamps());
  lblTagDetected = new QLabel(discovery::kNoDetectedTag, group);
  lblTagDetected->setObjectName("lblTagDetected");
  QFont bold = lblTagDetected->font();
  bold.setBold(true);
  lblTagDetected->setFont(bold);
  top->addWidget(lblTagDetected);
  lblTagDetection_result = new QLabel(group);
  lblTagDetection_result->setObjectName("lblTagDetection_result");
  lblTagDetection_result->setTextInteractionFlags(Qt::TextSelectableByMouse);
  top->addWidget(lblTagDetection_result, 1);
  grid->addLayout(top, 0, 0, 1, 4);

  cmdISO15693_AntiCollision = button("cmdISO15693_AntiCollision", "ISO15693 Inventory", group);
  cmdISO14443A_AntiCollision = button("cmdISO14443A_AntiCollision", "ISO14443A Anti Collision", group);
  cmdISO14443B_AntiCollision = button("cmdISO14443B_AntiCollision", "ISO14443B Anti Collision", group);
  cmdFelica_AntiCollision = button("cmdFelica_AntiCollision", "Felica Anti Collision", group);
  txtISO15693DetectTags = resultLine("txtISO15693DetectTags");
  txtISO14443ADetectTags = resultLine("txtISO14443ADetectTags");
  txt_ISO14443B_REQB_result = resultLine("txt_ISO14443B_REQB_result");
  txtFelicaDetectTags = resultLine("txtFelicaDetectTags");

  grid->addWidget(cmdISO15693_AntiCollision, 1, 0);
  grid->addWidget(txtISO15693DetectTags, 1, 1, 1, 3);
  grid->addWidget(cmdISO14443A_AntiCollision, 2, 0);
  grid->addWidget(txtISO14443ADetectTags, 2, 1, 1, 3);
  grid->addWidget(cmdISO14443B_AntiCollision, 3, 0);
  grid->addWidget(txt_ISO14443B_REQB_result, 3, 1, 1, 3);

  auto* slotGrid = new QGridLayout;
  slotGrid->setHorizontalSpacing(4);
  slotGrid->setVerticalSpacing(2);
  for (int slot = 1; slot <= discovery::kSlotCount; ++slot) {
    QLineEdit* box = resultLine(QString("txt_ISO14443B_anticollision_result_%1").arg(slot - 1 + firstSlotIndex_));
    box->setText(latin1(discovery::slotCaption(slot)));
    txt_ISO14443B_anticollision_result[static_cast<std::size_t>(slot - 1)] = box;
    slotGrid->addWidget(box, (slot - 1) % 5, (slot - 1) / 5);
  }
  grid->addLayout(slotGrid, 4, 1, 1, 3);
  grid->addWidget(cmdFelica_AntiCollision, 5, 0);
  grid->addWidget(txtFelicaDetectTags, 5, 1, 1, 3);
  grid->setColumnStretch(1, 1);
  grid->setColumnStretch(2, 1);
  grid->setColumnStretch(3, 1);

  connect(cmdISO15693_AntiCollision, &QPushButton::clicked, this, [this] { cmdISO15693_AntiCollision_Click(); });
  connect(cmdISO14443A_AntiCollision, &QPushButton::clicked, this, [this] { cmdISO14443A_AntiCollision_Click(); });
  connect(cmdISO14443B_AntiCollision, &QPushButton::clicked, this, [this] { cmdISO14443B_AntiCollision_Click(); });
  connect(cmdFelica_AntiCollision, &QPushButton::clicked, this, [this] { cmdFelica_AntiCollision_Click(); });
  return group;
}

QWidget* DiscoveryPanel::buildRequestAnswer() {
  auto* holder = new QWidget(this);
  auto* grid = new QGridLayout(holder);
  grid->setContentsMargins(0, 0, 0, 0);
  auto* request = new QLabel("request =", holder);
  request->setObjectName("lblRequest");
  auto* answer = new QLabel("answer =", holder);
  answer->setObjectName("lblAnswer");
  grid->addWidget(request, 0, 0);
  grid->addWidget(requestBox, 0, 1);
  grid->addWidget(answer, 1, 0);
  grid->addWidget(answerBox, 1, 1);
  return holder;
}

void DiscoveryPanel::showRequest(const std::string& text) { requestBox->setText(latin1(text)); }

std::string DiscoveryPanel::showAnswer(const std::string& text) {
  answerBox->setText(latin1(text));
  return boxText(answerBox);
}

std::string DiscoveryPanel::resultBox(ResultBox box) const {
  switch (box) {
    case ResultBox::Iso15693Tags: return boxText(txtISO15693DetectTags);
    case ResultBox::Iso14443ATags: return boxText(txtISO14443ADetectTags);
    case ResultBox::Iso14443BReqb: return boxText(txt_ISO14443B_REQB_result);
    case ResultBox::FelicaTags: return boxText(txtFelicaDetectTags);
  }
  return {};
}

void DiscoveryPanel::setResultBox(ResultBox box, const std::string& text) {
  switch (box) {
    case ResultBox::Iso15693Tags: txtISO15693DetectTags->setText(latin1(text)); break;
    case ResultBox::Iso14443ATags: txtISO14443ADetectTags->setText(latin1(text)); break;
    case ResultBox::Iso14443BReqb: txt_ISO14443B_REQB_result->setText(latin1(text)); break;
    case ResultBox::FelicaTags: txtFelicaDetectTags->setText(latin1(text)); break;
  }
}

std::string DiscoveryPanel::slotBox(int slot) const {
  if (slot < 1 || slot > discovery::kSlotCount) return {};
  return boxText(txt_ISO14443B_anticollision_result[static_cast<std::size_t>(slot - 1)]);
}

void DiscoveryPanel::setSlotBox(int slot, const std::string& text) {
  if (slot < 1 || slot > discovery::kSlotCount) return;
  txt_ISO14443B_anticollision_result[static_cast<std::size_t>(slot - 1)]->setText(latin1(text));
}

void DiscoveryPanel::resetSlots() {
  for (int slot = 1; slot <= discovery::kSlotCount; ++slot) setSlotBox(slot, discovery::left(slotBox(slot), 4));
}

void DiscoveryPanel::showDetected(bool detected) {
  ShapTagDetected[1]->setVisible(detected);
  QPalette p = lblTagDetected->palette();
  p.setColor(QPalette::WindowText,
             detected ? QColor(0, 0, 255) : QApplication::palette().color(QPalette::WindowText));
  lblTagDetected->setPalette(p);
  lblTagDetected->setText(detected ? discovery::kDetectedTag : discovery::kNoDetectedTag);
}

int DiscoveryPanel::tickedProtocols() const {
  int n = 0;
  for (int i = 0; i < discovery::kProtocolCount; ++i) n += ticked(i) ? 1 : 0;
  return n;
}

bool DiscoveryPanel::ticked(int index) const {
  return chkTagDetSelectProtocols[static_cast<std::size_t>(index)]->isChecked();
}

void DiscoveryPanel::cmdISO15693_AntiCollision_Click() {
  HandlerScope scope(this);
  probes().probeISO15693(true, false);
}

void DiscoveryPanel::cmdISO14443A_AntiCollision_Click() {
  HandlerScope scope(this);
  probes().probeISO14443A(true, false);
}

void DiscoveryPanel::cmdISO14443B_AntiCollision_Click() {
  HandlerScope scope(this);
  discovery::Probes p = probes();
  p.probeISO14443B_PDYxx(true, false);
  p.probeISO14443B(true, false);
}

void DiscoveryPanel::cmdFelica_AntiCollision_Click() {
  HandlerScope scope(this);
  probes().probeFelica(true, false);
}

void DiscoveryPanel::DEMO_TL42RQ_A_reconnect(std::int32_t& status) {
  reader::DEMO_TL42RQ_A_reconnect(reader::driver(), status);
}
void DiscoveryPanel::DEMO_TL42RQ_A_reconnect_iso15693(std::int32_t& status, int fastMode) {
  reader::DEMO_TL42RQ_A_reconnect_iso15693(reader::driver(), status, fastMode);
}
void DiscoveryPanel::DEMO_TL42RQ_A_reconnect_iso14443A(std::int32_t& status) {
  reader::DEMO_TL42RQ_A_reconnect_iso14443A(reader::driver(), status);
}
void DiscoveryPanel::DEMO_TL42RQ_A_reconnect_iso14443B(std::int32_t& status) {
  reader::DEMO_TL42RQ_A_reconnect_iso14443B(reader::driver(), status, false);
}
void DiscoveryPanel::DEMO_TL42RQ_A_reconnect_Felica(std::int32_t& status) {
  reader::DEMO_TL42RQ_A_reconnect_Felica(reader::driver(), status);
}
