// The memory page view of the three memory panels: a sixteen-row list over the rows of
// memoryBuffer with keys that scroll it, and the write grid of masked boxes with its fill
// box and buttons. Written once; each panel picks its variant and wires the buttons.
#pragma once

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QWidget>
#include <array>
#include <functional>
#include <string>

#include "iso15693/PageView.h"

class QGroupBox;
class QPushButton;

// A masked box as the panels know them: a pattern of fixed places ("AA" an alphanumeric
// place, ">" upper case), whose text keeps its blanks and shows unfilled places as "_".
class MaskedEdit : public QLineEdit {
  Q_OBJECT
 public:
  explicit MaskedEdit(const QString& name, QWidget* parent = nullptr);
  // The pattern in the panels' notation; an empty pattern clears it.
  void setPattern(const std::string& pattern);
  const std::string& pattern() const { return pattern_; }
  // Set as hexadecimal places (mskFillPage).
  void setHexPlaces(int places);
  // The text with its separators and with "_" on unfilled places.
  std::string maskedText() const;
  void setMaskedText(const std::string& text);

 private:
  std::string pattern_;
};

// A combo box that can be locked against the user without being disabled.
class LockableComboBox : public QComboBox {
  Q_OBJECT
 public:
  explicit LockableComboBox(const QString& name, QWidget* parent = nullptr);
  void setLocked(bool locked) { locked_ = locked; }
  bool locked() const { return locked_; }
  void showPopup() override;

 protected:
  void keyPressEvent(QKeyEvent* e) override;
  void wheelEvent(QWheelEvent* e) override;
  void mousePressEvent(QMouseEvent* e) override;

 private:
  bool locked_ = false;
};

// A label that tells when it is clicked.
class ClickableLabel : public QLabel {
  Q_OBJECT
 public:
  ClickableLabel(const QString& name, const QString& caption, QWidget* parent = nullptr);
 signals:
  void clicked();

 protected:
  void mousePressEvent(QMouseEvent* e) override;
};

class ReadViewList;

class MemoryPageView : public QWidget {
  Q_OBJECT
 public:
  struct Host {
    // Digits of the panel's address boxes: the displayed rows pad their address to it.
    std::function<int()> addressWidth;
    // Whether Write is offered when the grid opens (the ISO 15693 panel: on the user
    // mode tab only).
    std::function<bool()> writeButtonVisible;
  };

  MemoryPageView(pageview::Variant variant, Host host, QWidget* parent = nullptr);

  pageview::Variant variant() const { return variant_; }

  // The controls, named as the panels name them.
  QListWidget* lstReadView() const;
  QGroupBox* fraPageWrite() const { return fraPageWrite_; }
  MaskedEdit* PWData(int i) const { return pwData_[static_cast<std::size_t>(i)]; }
  MaskedEdit* mskFillPage() const { return mskFillPage_; }
  QLabel* lblAutoFill() const { return lblAutoFill_; }
  QPushButton* cmdWriteUser() const { return cmdWriteUser_; }
  QPushButton* cmdWriteTest() const { return cmdWriteTest_; }
  QPushButton* cmdCancelWriteTest() const { return cmdCancelWriteTest_; }
  LockableComboBox* cboPageSize() const { return cboPageSize_; }  // ISO 15693 only
  QLabel* lblNbData() const { return lblNbData_; }                // ISO 15693 only
  QLineEdit* txtPageSize() const { return txtPageSize_; }          // ISO 14443-A only

  long firstShownRow() const { return firstShownRow_; }

  // After a read of `count` blocks from `start`: the rows of memoryBuffer in the list.
  void showReadRows(long count, long start);
  // "1" up to the product's page size, the page size chosen.
  void fillPageSizeList(int pageSize);
  // The grid for a write of N bytes.
  void setPageGrid(int bytes);
  // The text of PWData 0 to (bytes-1)\pageRowBytes joined, blanks kept.
  std::string gridData(int bytes) const;
  void setGridEnabled(bool enabled);
  // mskFillPage back to "__" (empty).
  void clearFill();
  // The number of bytes a write of this variant takes by the page size control.
  std::string pageSizeText() const;

  // The handlers, callable as the events call them.
  void lstReadView_KeyDown(int virtualKeyCode);
  void lstReadView_DblClick();
  void mskFillPage_Change();
  void cboPageSize_Click();

 signals:
  void writeClicked();
  void cancelClicked();

 private:
  pageview::Variant variant_;
  Host host_;
  ReadViewList* list_ = nullptr;
  QGroupBox* fraPageWrite_ = nullptr;
  std::array<MaskedEdit*, 16> pwData_{};
  MaskedEdit* mskFillPage_ = nullptr;
  QLabel* lblAutoFill_ = nullptr;
  QPushButton* cmdWriteUser_ = nullptr;
  QPushButton* cmdWriteTest_ = nullptr;
  QPushButton* cmdCancelWriteTest_ = nullptr;
  LockableComboBox* cboPageSize_ = nullptr;
  QLabel* lblNbData_ = nullptr;
  QLineEdit* txtPageSize_ = nullptr;
  long firstShownRow_ = 1;
  int gridBoxes_ = 0;
};
