// A box of the console's frames. It filters its keys like every hexadecimal (or bit)
// field and tells the panel when a key is released: that is when the console writes the
// box back in its normal form ("a" becomes "0A", an odd data text gets a "0" in front).
#pragma once

#include "reader/ui/HexFields.h"

class FrameByteEdit : public HexLineEdit {
  Q_OBJECT
 public:
  explicit FrameByteEdit(const QString& name, reader::FieldKind kind = reader::FieldKind::Hexadecimal,
                         QWidget* parent = nullptr);

  // Writes the normal form of the box after a key. Zeros it adds in front are the
  // console's, not the person's: the next digit or backspace typed at the end of the
  // untouched text takes them away again, so that typing "A", "B" gives "AB" and not "0A"
  // with the "B" refused, and typing "7", "5" into an emptied box ("00") gives "75".
  void setNormalised(const QString& text);

 signals:
  void keyUp();

 protected:
  void keyPressEvent(QKeyEvent* event) override;
  void keyReleaseEvent(QKeyEvent* event) override;

 private:
  QString normalised_;
  int pad_ = 0;
};
