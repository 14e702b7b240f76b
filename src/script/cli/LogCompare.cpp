#include "script/cli/LogCompare.h"

#include <algorithm>

namespace script {

namespace {

bool digits(const std::string& s, std::size_t from, std::size_t count) {
  for (std::size_t i = from; i < from + count; ++i)
    if (i >= s.size() || s[i] < '0' || s[i] > '9') return false;
  return true;
}

// "MM-DD-YYYY" at `at`.
bool dateAt(const std::string& s, std::size_t at) {
  return digits(s, at, 2) && s.size() > at + 5 && s[at + 2] == '-' && digits(s, at + 3, 2) && s[at + 5] == '-' &&
         digits(s, at + 6, 4);
}
// "HH:MM:SS" at `at`.
bool timeAt(const std::string& s, std::size_t at) {
  return digits(s, at, 2) && s.size() > at + 5 && s[at + 2] == ':' && digits(s, at + 3, 2) && s[at + 5] == ':' &&
         digits(s, at + 6, 2);
}

// The lines between line feeds, each without the CR in front of its LF.
std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::size_t start = 0;
  while (start <= text.size()) {
    const std::size_t end = text.find('\n', start);
    if (end == std::string::npos) {
      lines.push_back(text.substr(start));
      break;
    }
    const std::size_t cut = end > start && text[end - 1] == '\r' ? end - 1 : end;
    lines.push_back(text.substr(start, cut - start));
    start = end + 1;
  }
  return lines;
}

enum class Edit { Same, Removed, Added };
struct Step {
  Edit edit;
  std::size_t a, b;  // line indices in expected and actual
};

// The edit script: common head and tail, and between them the longest common
// subsequence when that part is small enough to tabulate; otherwise all of it changes.
std::vector<Step> editScript(const std::vector<std::string>& x, const std::vector<std::string>& y) {
  std::size_t head = 0;
  while (head < x.size() && head < y.size() && x[head] == y[head]) ++head;
  std::size_t tail = 0;
  while (tail < x.size() - head && tail < y.size() - head && x[x.size() - 1 - tail] == y[y.size() - 1 - tail]) ++tail;
  const std::size_t n = x.size() - head - tail;
  const std::size_t m = y.size() - head - tail;
  std::vector<Step> steps;
  for (std::size_t i = 0; i < head; ++i) steps.push_back({Edit::Same, i, i});
  constexpr std::size_t kMaxTable = 4'000'000;
  if (n > 0 && m > 0 && (n + 1) * (m + 1) <= kMaxTable) {
    std::vector<std::uint32_t> len((n + 1) * (m + 1), 0);
    auto at = [&](std::size_t i, std::size_t j) -> std::uint32_t& { return len[i * (m + 1) + j]; };
    for (std::size_t i = n; i-- > 0;)
      for (std::size_t j = m; j-- > 0;)
        at(i, j) = x[head + i] == y[head + j] ? at(i + 1, j + 1) + 1 : std::max(at(i + 1, j), at(i, j + 1));
    std::size_t i = 0, j = 0;
    while (i < n || j < m) {
      if (i < n && j < m && x[head + i] == y[head + j]) {
        steps.push_back({Edit::Same, head + i++, head + j++});
      } else if (i < n && (j == m || at(i + 1, j) >= at(i, j + 1))) {
        steps.push_back({Edit::Removed, head + i++, head + j});
      } else {
        steps.push_back({Edit::Added, head + i, head + j++});
      }
    }
  } else {
    for (std::size_t i = 0; i < n; ++i) steps.push_back({Edit::Removed, head + i, head + m});
    for (std::size_t j = 0; j < m; ++j) steps.push_back({Edit::Added, head + n, head + j});
  }
  for (std::size_t k = 0; k < tail; ++k) steps.push_back({Edit::Same, head + n + k, head + m + k});
  return steps;
}

std::string range(std::size_t start, std::size_t count) {
  // Unified diff: the first line counted from 1, or the line before when the range is empty.
  const std::size_t first = count == 0 ? start : start + 1;
  return std::to_string(first) + (count == 1 ? std::string() : "," + std::to_string(count));
}

}  // namespace

std::string withoutEntryTimes(const std::string& log) {
  std::string out = log;
  std::size_t start = 0;
  while (start < out.size()) {
    if (dateAt(out, start)) {
      if (out.size() > start + 19 && out[start + 10] == ' ' && timeAt(out, start + 11) && out[start + 19] == '\t')
        out.replace(start, 19, "##-##-#### ##:##:##");
      else if (out.size() > start + 11 && out[start + 10] == ' ' && out[start + 11] == '\t')
        out.replace(start, 10, "##-##-####");
    }
    const std::size_t next = out.find('\n', start);
    if (next == std::string::npos) break;
    start = next + 1;
  }
  return out;
}

LogComparison compareLogs(const std::string& expected, const std::string& actual, const std::string& expectedName,
                          const std::string& actualName, std::size_t maxLines) {
  LogComparison c;
  const std::string maskedExpected = withoutEntryTimes(expected);
  const std::string maskedActual = withoutEntryTimes(actual);
  if (maskedExpected == maskedActual) return c;
  c.same = false;
  const std::vector<std::string> x = linesOf(maskedExpected);
  const std::vector<std::string> y = linesOf(maskedActual);
  if (x == y) {
    // Every line agrees, so only the carriage returns before the line feeds differ.
    c.diff = "--- " + expectedName + "\n+++ " + actualName + "\nthe lines agree but their line ends differ (CR LF and LF)\n";
    return c;
  }
  const std::vector<std::string> rawX = linesOf(expected);
  const std::vector<std::string> rawY = linesOf(actual);
  const std::vector<Step> steps = editScript(x, y);

  std::vector<std::string> out{"--- " + expectedName, "+++ " + actualName};
  constexpr std::size_t kContext = 3;
  std::size_t k = 0;
  while (k < steps.size() && out.size() < maxLines) {
    // The next change, and the hunk around it: changes closer than twice the context join.
    while (k < steps.size() && steps[k].edit == Edit::Same) ++k;
    if (k == steps.size()) break;
    std::size_t from = k >= kContext ? k - kContext : 0;
    std::size_t to = k;
    std::size_t sameRun = 0;
    for (std::size_t s = k; s < steps.size(); ++s) {
      if (steps[s].edit == Edit::Same) {
        if (++sameRun > 2 * kContext) break;
      } else {
        sameRun = 0;
        to = s;
      }
    }
    const std::size_t end = std::min(steps.size(), to + 1 + kContext);
    std::size_t countX = 0, countY = 0;
    for (std::size_t s = from; s < end; ++s) {
      if (steps[s].edit != Edit::Added) ++countX;
      if (steps[s].edit != Edit::Removed) ++countY;
    }
    out.push_back("@@ -" + range(steps[from].a, countX) + " +" + range(steps[from].b, countY) + " @@");
    for (std::size_t s = from; s < end; ++s) {
      switch (steps[s].edit) {
        case Edit::Same:
          out.push_back(" " + rawX[steps[s].a]);
          break;
        case Edit::Removed:
          out.push_back("-" + rawX[steps[s].a]);
          break;
        case Edit::Added:
          out.push_back("+" + rawY[steps[s].b]);
          break;
      }
    }
    k = end;
  }
  if (out.size() > maxLines) out.resize(maxLines);
  for (const std::string& line : out) c.diff += line + "\n";
  return c;
}

}  // namespace script
