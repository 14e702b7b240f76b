#include "console/ui/FrameByteEdit.h"

#include <QKeyEvent>

FrameByteEdit::FrameByteEdit(const QString& name, reader::FieldKind kind, QWidget* parent)
    : HexLineEdit(name, kind, parent) {}

void FrameByteEdit::setNormalised(const QString& text) {
  const QString before = this->text();
  // The zeros the normal form puts in front of what was typed ("" becomes "00").
  pad_ = 0;
  const qsizetype added = text.size() - before.size();
  if (added > 0 && text.left(added) == QString(added, QLatin1Char('0'))) pad_ = static_cast<int>(added);
  normalised_ = text;
  if (text != before) setText(text);
}

void FrameByteEdit::keyPressEvent(QKeyEvent* event) {
  const QString typed = event->text();
  const bool printable = typed.size() == 1 && typed.at(0) >= QLatin1Char(' ');
  const bool refused = printable && !reader::keyAllowed(kind(), typed.at(0).unicode());
  const bool backspace = event->key() == Qt::Key_Backspace;
  // Only keys that change the text count; Shift and the like leave the pad as it is.
  if ((printable && !refused) || backspace || event->key() == Qt::Key_Delete) {
    if (pad_ > 0 && !isReadOnly() && text() == normalised_ && !hasSelectedText() &&
        cursorPosition() == text().size() && (printable || backspace))
      setText(text().mid(pad_));
    pad_ = 0;
  }
  HexLineEdit::keyPressEvent(event);
}

void FrameByteEdit::keyReleaseEvent(QKeyEvent* event) {
  HexLineEdit::keyReleaseEvent(event);
  emit keyUp();
}
