// Fields that take hexadecimal (or binary, or decimal) text: they refuse other keys
// with a beep; a free frame field also shows by its colour whether it holds whole bytes.
#pragma once

#include <QLineEdit>

#include "reader/HexText.h"

class HexLineEdit : public QLineEdit {
  Q_OBJECT
 public:
  explicit HexLineEdit(const QString& name, reader::FieldKind kind = reader::FieldKind::Hexadecimal,
                       QWidget* parent = nullptr);
  reader::FieldKind kind() const { return kind_; }
  std::string value() const { return text().toStdString(); }

 protected:
  void keyPressEvent(QKeyEvent* event) override;
  // Told before a typed character goes in (or is refused).
  virtual void beforeKey(QKeyEvent*) {}

 private:
  reader::FieldKind kind_;
};

// A free frame field: red while it does not hold whole bytes. Colour only warns; the
// frame is sent as it stands.
class FrameLineEdit : public HexLineEdit {
  Q_OBJECT
 public:
  explicit FrameLineEdit(const QString& name, QWidget* parent = nullptr);
  bool showsNormalColour() const { return normal_; }

 protected:
  void beforeKey(QKeyEvent* event) override;

 private:
  void setNormalColour(bool normal);
  bool normal_ = false;
};
