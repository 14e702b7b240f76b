#include "discovery/ui/ShapeMark.h"

#include <QApplication>
#include <QPainter>
#include <QPalette>

ShapeMark::ShapeMark(const QString& name, const QColor& colour, QWidget* parent) : QWidget(parent), colour_(colour) {
  setObjectName(name);
  setFixedSize(sizeHint());
}

void ShapeMark::setColour(const QColor& colour) {
  colour_ = colour;
  update();
}

QColor ShapeMark::faceColour() { return QApplication::palette().color(QPalette::Button); }
QColor ShapeMark::green() { return QColor(0, 192, 0); }
QColor ShapeMark::red() { return QColor(255, 0, 0); }
QColor ShapeMark::neutral() { return QColor(128, 128, 128); }

void ShapeMark::paintEvent(QPaintEvent*) {
  QPainter p(this);
  p.setRenderHint(QPainter::Antialiasing);
  p.setPen(QPen(QColor(64, 64, 64), 1));
  p.setBrush(colour_);
  p.drawEllipse(rect().adjusted(2, 2, -2, -2));
}
