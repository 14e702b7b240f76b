// A panel's trace view. The trace log's string is the only copy of the text: the view
// keeps where each line starts, lays out only the lines on screen, and gathers appends
// until the screen's next refresh, as a terminal does. A loop that appends thousands of
// entries between two refreshes pays for one paint, not thousands.
//
// It is a read-only QPlainTextEdit to the rest of the program: its document holds the
// last lines of the log (up to kMirrorLines of them) with the caret at the end, so the
// editor's API reads the text of any ordinary log. The document is never laid out or
// painted; what shows on screen is drawn from the log's string. During a long burst of
// appends (a loop) the document catches up when the burst pauses, so a loop does not pay
// for it at every entry.
#pragma once

#include <QPlainTextEdit>
#include <QTimer>
#include <QHash>
#include <cstddef>
#include <memory>
#include <string>

#include "reader/LogLines.h"
#include "reader/TraceLog.h"

class QScrollBar;
class QTextLayout;

class LogView final : public QPlainTextEdit {
  Q_OBJECT
 public:
  // Lines the document keeps for the editor's API.
  static constexpr int kMirrorLines = 500;
  // Time between two refreshes while appends come in: the screen's refresh.
  static constexpr int kRefreshMs = 16;
  // Appends of one burst that reach the document at once; the rest of a long burst
  // reaches it when the burst pauses for a refresh.
  static constexpr int kSyncAppends = 64;

  LogView(const reader::TraceLog& log, QWidget* parent = nullptr);
  ~LogView() override;

  // The trace log tells the view what it did.
  void appended(const std::string& piece);
  void cleared();

  // Lines of the log, and the first one on screen.
  std::size_t lineCount() const { return lines_.count(); }
  // Line n as the view draws it.
  QString lineText(std::size_t n) const { return shownLine(n); }
  std::size_t firstVisibleLine() const;
  // Whether the view stands at the end of the log, as it does after every append.
  bool followsEnd() const;
  // Brings scroll bars and screen up to date now instead of at the next refresh.
  void refreshNow();

 protected:
  void paintEvent(QPaintEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void showEvent(QShowEvent* event) override;
  void changeEvent(QEvent* event) override;
  void scrollContentsBy(int dx, int dy) override;
  void wheelEvent(QWheelEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;
  void contextMenuEvent(QContextMenuEvent* event) override;

 private:
  // A place in the text: line and character within the shown line.
  struct Spot {
    std::size_t line = 0;
    int column = 0;
    bool operator<(const Spot& o) const { return line < o.line || (line == o.line && column < o.column); }
    bool operator==(const Spot& o) const { return line == o.line && column == o.column; }
  };

  QString shownLine(std::size_t n) const;
  void layOut(QTextLayout& layout, const QString& text) const;
  // The laid-out line n, kept while it stays near the screen.
  const QTextLayout& laidOutLine(std::size_t n) const;
  void scheduleRefresh();
  void refresh();
  void placeScrollBars();
  void mirror(const std::string& piece);
  void rebuildMirror();
  int visibleLines() const;
  int endTop() const;
  qreal lineHeight() const;
  Spot spotAt(const QPoint& pos) const;
  QString selectedText() const;
  void copySelection() const;
  void selectEverything();
  void setWidest(qreal width);

  const reader::TraceLog& log_;
  reader::LogLines lines_;
  QScrollBar* vbar_;
  QScrollBar* hbar_;
  QTimer refreshTimer_;
  bool scrollToEnd_ = false;
  std::size_t capacity_ = 0;
  int burst_ = 0;
  bool mirrorStale_ = false;
  std::size_t mirrored_ = 0;  // bytes of the log's text the document has been given
  bool appendedSinceRefresh_ = false;
  mutable qreal lineHeight_ = 0;
  mutable QHash<std::size_t, std::shared_ptr<QTextLayout>> layouts_;
  qreal widest_ = 0;
  bool selecting_ = false;
  bool hasSelection_ = false;
  Spot anchor_, caret_;
};
