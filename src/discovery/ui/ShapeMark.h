// A coloured mark: the lamps and reason marks of the discovery tools. It draws a filled
// disc in its colour; tests read the colour back.
#pragma once

#include <QColor>
#include <QWidget>

class ShapeMark : public QWidget {
  Q_OBJECT
 public:
  ShapeMark(const QString& name, const QColor& colour, QWidget* parent = nullptr);
  QColor colour() const { return colour_; }
  void setColour(const QColor& colour);
  QSize sizeHint() const override { return {22, 22}; }

  // The colours the tools give their marks.
  static QColor faceColour();  // the system's normal face colour of a button
  static QColor green();
  static QColor red();
  static QColor neutral();

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  QColor colour_;
};
