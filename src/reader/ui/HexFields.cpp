#include "reader/ui/HexFields.h"

#include <QKeyEvent>
#include <QApplication>
#include <QPalette>

#include "shell/ui/Dialogs.h"

HexLineEdit::HexLineEdit(const QString& name, reader::FieldKind kind, QWidget* parent)
    : QLineEdit(parent), kind_(kind) {
  setObjectName(name);
}

void HexLineEdit::keyPressEvent(QKeyEvent* event) {
  const QString typed = event->text();
  beforeKey(event);
  if (typed.size() == 1 && !reader::keyAllowed(kind_, typed.at(0).unicode())) {
    dialogs().beep();
    event->accept();
    return;
  }
  QLineEdit::keyPressEvent(event);
}

FrameLineEdit::FrameLineEdit(const QString& name, QWidget* parent)
    : HexLineEdit(name, reader::FieldKind::Hexadecimal, parent) {
  connect(this, &QLineEdit::textChanged, this,
          [this](const QString& t) { setNormalColour(reader::frameColourNormalOnChange(t.toStdString())); });
  setNormalColour(false);
}

void FrameLineEdit::beforeKey(QKeyEvent* event) {
  // The key is not in the text yet: a digit is judged on the text without it, with the
  // sense inverted; any other key on the text as it stands. The change that follows a
  // digit judges again.
  setNormalColour(reader::frameColourNormalOnKey(text().toStdString()));
  Q_UNUSED(event);
}

void FrameLineEdit::setNormalColour(bool normal) {
  normal_ = normal;
  QPalette p = palette();
  p.setColor(QPalette::Text, normal ? QApplication::palette().color(QPalette::Text) : QColor(255, 0, 0));
  setPalette(p);
}
