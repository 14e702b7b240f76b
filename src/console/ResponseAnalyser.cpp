#include "console/ResponseAnalyser.h"

#include "common/hex.h"
#include "console/ChipCommands.h"

namespace console {

std::string transactionError(std::int32_t status, std::string_view answer) {
  return "Transaction error : " + std::to_string(status) + " (" + std::string(answer.substr(0, 2)) + ")";
}

std::string_view panelCommand(SendPanel p) {
  switch (p) {
    case SendPanel::ProtocolSelect:
      return "02";
    case SendPanel::Idle:
      return "07";
    case SendPanel::Filter:
      return "0D";
    case SendPanel::Generic:
      break;
  }
  return {};
}

const ExplainRule* findRule(SendPanel panel, std::string_view command, std::string_view code) {
  for (const ExplainRule& r : kExplainRules)
    if (r.panel == panel && r.command == command && (r.code.empty() || r.code == code)) return &r;
  return nullptr;
}

std::optional<int> answerLength(std::string_view answer) {
  if (answer.size() <= 2) return std::nullopt;
  const std::string_view digits = answer.substr(2, 2);
  int value = 0;
  for (char c : digits) {
    const int d = hex::digitValue(c);
    if (d < 0) return std::nullopt;
    value = value * 16 + d;
  }
  return value;
}

std::string answerByte(std::string_view answer, int n) {
  // Characters 5+2n and 6+2n, counted from 1.
  const long position = 5L + 2L * n;
  if (position < 1) return {};
  const auto at = static_cast<std::size_t>(position - 1);
  if (at >= answer.size()) return {};
  return std::string(answer.substr(at, 2));
}

namespace {

std::string lengthLine(std::string_view ll, int l) {
  return std::string(ll) + " : Lenght of Data (" + std::to_string(l) + ")";
}

std::string byteList(std::string_view answer, int from, int to, std::string_view separator) {
  std::string out;
  for (int i = from; i <= to; ++i) {
    out += answerByte(answer, i);
    out += separator;
  }
  return out;
}

std::string_view ackOrNak(std::string_view reply) {
  for (std::string_view nak : chip::kNakReplies)
    if (reply == nak) return "NAK";
  if (reply == chip::kAckReply) return "ACK";
  return "????";
}

// The IDN name: each data byte turned into one 8-bit character. A piece that is no
// number (beyond the end of the answer, or not hexadecimal) ends the explanation.
std::optional<std::string> nameText(std::string_view answer, int l) {
  std::string out;
  for (int i = 0; i <= l - 3; ++i) {
    const std::string piece = answerByte(answer, i);
    const auto value = piece.empty() ? std::nullopt : hex::toNumber(piece);
    if (!value) return std::nullopt;
    out.push_back(static_cast<char>(*value & 0xFF));
  }
  return out;
}

}  // namespace

Explanation analyseAnswer(SendPanel panel, std::string_view command, std::int32_t status, std::string_view answer) {
  Explanation e;
  e.answerBox = std::string(answer);
  if (answer.size() > kMaxExplainedAnswer) {
    e.answerBox = std::string(kNotCorrectData);
    return e;
  }
  if (status != 0) {
    e.answerBox = panel == SendPanel::Generic ? std::string(kGenericTransactionError) : transactionError(status, answer);
    return e;
  }

  const std::string_view cmd = panel == SendPanel::Generic ? command : panelCommand(panel);
  const std::string code(answer.substr(0, 2));
  const ExplainRule* rule = findRule(panel, cmd, code);
  if (!rule) return e;

  const std::string ll(answer.size() > 2 ? answer.substr(2, 2) : std::string_view{});
  const std::optional<int> l = answerLength(answer);
  // The name's length is read before line 0 is written: an unreadable one gives no line.
  if (rule->detail == Detail::Name && !l) return e;

  if (rule->line0 == Line0::Table) {
    const auto text = chip::resultText(cmd, code);
    e.lines.emplace_back(text ? *text : std::string_view{});
  } else {
    e.lines.push_back(code + std::string(chip::kCatchAllSuffix));
  }
  if (!l) return e;
  const int n = *l;

  switch (rule->detail) {
    case Detail::Length:
      e.lines.push_back(lengthLine(ll, n));
      break;
    case Detail::LengthEquals:
      e.lines.push_back(ll + " : Lenght of Data = " + std::to_string(n));
      break;
    case Detail::ValidBits:
      e.lines.push_back(ll + " : Valid bits (" + std::to_string(n) + ")");
      e.lines.emplace_back(ackOrNak(answerByte(answer, 0)));
      break;
    case Detail::Name: {
      e.lines.push_back(lengthLine(ll, n));
      if (auto name = nameText(answer, n)) e.lines.push_back(std::move(*name));
      break;
    }
    case Detail::TagFrame:
      e.lines.push_back(lengthLine(ll, n));
      e.lines.push_back(byteList(answer, 0, n - 4, " ") + std::string(chip::kTagAnswerWords));
      e.lines.push_back(answerByte(answer, n - 3) + " " + answerByte(answer, n - 2) + std::string(chip::kCrcWords));
      e.lines.push_back(answerByte(answer, n - 1) + std::string(chip::kProtocolResultWords));
      break;
    case Detail::RegisterData:
      e.lines.push_back(lengthLine(ll, n));
      e.lines.push_back("Data : " + byteList(answer, 0, n - 1, " "));
      break;
    case Detail::FrequencyData:
      e.lines.push_back(lengthLine(ll, n));
      e.lines.push_back("Frequency reult : " + byteList(answer, 0, n - 1, " "));
      break;
    case Detail::FieldState: {
      e.lines.push_back(lengthLine(ll, n));
      const std::string b0 = answerByte(answer, 0);
      e.lines.push_back(b0 + (b0 == "00" ? " : Field is not detected" : b0 == "01" ? " : Field is detected" : " : ?!?"));
      break;
    }
    case Detail::FilterData:
      e.lines.push_back(lengthLine(ll, n));
      e.lines.push_back(byteList(answer, 0, n - 1, ""));
      break;
  }
  return e;
}

}  // namespace console
