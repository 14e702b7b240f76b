#include "simulator/fieldfile.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <optional>
#include <set>
#include <variant>

#include "simulator/tags/kinds.h"

namespace sim {

namespace {

constexpr KeySpec kBoardKeys[] = {
    {.name = "present", .kind = ValueKind::Bool, .fallback = "true"},
    {.name = "dllRevision", .kind = ValueKind::Text, .min = 1, .max = 64, .fallback = "0.5.0"},
    // The controller answers one byte an element; the count goes out as one byte too.
    {.name = "mcuRevision", .kind = ValueKind::ByteList, .max = 16, .fallback = "[1, 4, 1]"},
    // The IDN answer carries the name, two CRC bytes and its header in 256 characters.
    {.name = "chipName", .kind = ValueKind::Text, .min = 1, .max = 100, .fallback = "NFC TL42RQ"},
    {.name = "interfacePin", .kind = ValueKind::Integer, .min = 0, .max = 2, .fallback = "1"},
    // Opt-in: Idle then takes the time the chip would sleep (simulator/wakeup.h).
    {.name = "realTimeIdle", .kind = ValueKind::Bool},
};
constexpr KeySpec kAntennaKeys[] = {
    {.name = "detectLevel", .kind = ValueKind::Integer, .min = 0, .max = 255, .fallback = "31"},
};
// Keys that every tag entry may carry before those of its kind.
constexpr KeySpec kTagCommonKeys[] = {
    {.name = "type", .kind = ValueKind::Text, .min = 1, .max = 32, .required = true},
    {.name = "product", .kind = ValueKind::Text, .min = 1, .max = 32},
    {.name = "inField", .kind = ValueKind::Bool, .fallback = "true"},
    // How much the tag lowers the tag detector's reading: "near" or "far", or a number.
    {.name = "distance", .kind = ValueKind::Text, .min = 1, .max = 32},
    {.name = "loadShift", .kind = ValueKind::Integer, .min = -255, .max = 255},
};
// An entry of "answers": what the board answers instead of the simulation.
constexpr KeySpec kAnswerKeys[] = {
    {.name = "op", .kind = ValueKind::Text, .min = 1, .max = 64, .required = true},
    // A request holds at most 255 bytes: the chip frame's length is one byte.
    {.name = "request", .kind = ValueKind::Hex, .min = 0, .max = 255, .fallback = ""},
    // The caller's buffer holds 255 characters and the NUL.
    {.name = "answer", .kind = ValueKind::AnyText, .min = 0, .max = 255, .fallback = ""},
    {.name = "status", .kind = ValueKind::Integer, .min = std::numeric_limits<std::int32_t>::min(),
     .max = std::numeric_limits<std::int32_t>::max(), .fallback = "0"},
    // Absent: every matching call.
    {.name = "times", .kind = ValueKind::Integer, .min = 0, .max = std::numeric_limits<std::int32_t>::max()},
};
constexpr const char* kTopKeys[] = {"board", "antenna", "tags", "answers"};
// A tag's memory is at most 64 KiB: 2048 blocks of 32 bytes, or 65536 blocks of one.
constexpr long kMaxMemory = 65536;

using Step = std::variant<std::string, std::size_t>;
using Path = std::vector<Step>;

// A fault of the content; `path` leads to the value that is wrong.
struct FieldError {
  Path path;
  std::string message;
};

std::string pathText(const Path& path) {
  std::string out;
  for (const Step& step : path) {
    if (const auto* key = std::get_if<std::string>(&step)) {
      if (!out.empty()) out += '.';
      out += *key;
    } else {
      out += '[' + std::to_string(std::get<std::size_t>(step)) + ']';
    }
  }
  return out;
}

Path with(Path path, Step step) {
  path.push_back(std::move(step));
  return path;
}

// How a wrong value is named in an error text.
std::string describe(const Json& value) {
  switch (value.type()) {
    case Json::value_t::string: {
      std::string text = value.get<std::string>();
      if (text.size() > 24) text = text.substr(0, 24) + "...";
      return "the text \"" + text + "\"";
    }
    case Json::value_t::boolean: return value.get<bool>() ? "true" : "false";
    case Json::value_t::null: return "null";
    case Json::value_t::object: return "an object";
    case Json::value_t::array: return "a list";
    default: return "the number " + value.dump();
  }
}

bool printable(const std::string& text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return c >= 0x20 && c <= 0x7E; });
}

std::string byteCountText(const KeySpec& rule) {
  if (rule.sizes == 0)
    return rule.min == rule.max ? std::to_string(rule.min)
                                : std::to_string(rule.min) + " to " + std::to_string(rule.max);
  std::vector<std::string> counts;
  for (int n = 0; n < 32; ++n)
    if (rule.sizes & (1u << n)) counts.push_back(std::to_string(n));
  std::string out;
  for (std::size_t i = 0; i < counts.size(); ++i)
    out += (i == 0 ? "" : i + 1 == counts.size() ? " or " : ", ") + counts[i];
  return out;
}

bool wholeNumber(const Json& value) { return value.is_number_integer(); }

// Hexadecimal text as written by a person (blanks allowed) to upper-case digits.
std::string checkHex(const Json& value, const Path& path) {
  if (!value.is_string()) throw FieldError{path, "hexadecimal text is needed, found " + describe(value)};
  const std::string digits = hex::upper(hex::withoutBlanks(value.get<std::string>()));
  for (char c : digits)
    if (!hex::isDigit(c)) {
      const std::string shown = c >= 0x20 && c <= 0x7E ? std::string(1, c) : "\\x" + hex::byte(static_cast<std::uint8_t>(c));
      throw FieldError{path, "'" + shown + "' is no hexadecimal digit"};
    }
  if (digits.size() % 2 != 0)
    throw FieldError{path, "an odd number of hexadecimal digits (" + std::to_string(digits.size()) +
                               "): every byte takes two"};
  return digits;
}

Json checkValue(const Json& value, const KeySpec& rule, const Path& path) {
  switch (rule.kind) {
    case ValueKind::Bool:
      if (!value.is_boolean()) throw FieldError{path, "true or false is needed, found " + describe(value)};
      return value;
    case ValueKind::Text:
    case ValueKind::AnyText: {
      if (!value.is_string()) throw FieldError{path, "a text is needed, found " + describe(value)};
      const std::string& text = value.get_ref<const std::string&>();
      if (static_cast<long>(text.size()) < rule.min || static_cast<long>(text.size()) > rule.max)
        throw FieldError{path, "a text of " + std::to_string(rule.min) + " to " + std::to_string(rule.max) +
                                   " characters is needed, found " + std::to_string(text.size())};
      if (rule.kind == ValueKind::Text && !printable(text))
        throw FieldError{path, "only printable ASCII characters are allowed"};
      return value;
    }
    case ValueKind::Integer:
      if (!wholeNumber(value) || value.get<long long>() < rule.min || value.get<long long>() > rule.max)
        throw FieldError{path, "a whole number from " + std::to_string(rule.min) + " to " +
                                   std::to_string(rule.max) + " is needed, found " + describe(value)};
      return value;
    case ValueKind::ByteList: {
      if (!value.is_array() || static_cast<long>(value.size()) > rule.max)
        throw FieldError{path, "a list of at most " + std::to_string(rule.max) +
                                   " numbers from 0 to 255 is needed, found " + describe(value)};
      for (std::size_t i = 0; i < value.size(); ++i)
        if (!wholeNumber(value[i]) || value[i].get<long long>() < 0 || value[i].get<long long>() > 255)
          throw FieldError{with(path, i), "a whole number from 0 to 255 is needed, found " + describe(value[i])};
      return value;
    }
    case ValueKind::IndexList: {
      if (!value.is_array()) throw FieldError{path, "a list of block numbers is needed, found " + describe(value)};
      for (std::size_t i = 0; i < value.size(); ++i)
        if (!wholeNumber(value[i]) || value[i].get<long long>() < 0)
          throw FieldError{with(path, i), "a block number (a whole number from 0) is needed, found " +
                                              describe(value[i])};
      return value;
    }
    case ValueKind::Hex: {
      const std::string digits = checkHex(value, path);
      const std::size_t bytes = digits.size() / 2;
      const bool fits = rule.sizes != 0 ? bytes < 32 && (rule.sizes & (1u << bytes)) != 0
                                        : static_cast<long>(bytes) >= rule.min && static_cast<long>(bytes) <= rule.max;
      if (!fits)
        throw FieldError{path, "hexadecimal text of " + byteCountText(rule) +
                                   (rule.max == 1 && rule.sizes == 0 ? " byte" : " bytes") + " is needed, found " +
                                   std::to_string(bytes)};
      return digits;
    }
    case ValueKind::HexMemory:
      return checkHex(value, path);
  }
  return value;
}

Json fallbackOf(const KeySpec& rule) {
  const bool plainText = rule.kind == ValueKind::Text || rule.kind == ValueKind::Hex ||
                         rule.kind == ValueKind::HexMemory || rule.kind == ValueKind::AnyText;
  return plainText ? Json(rule.fallback) : Json::parse(rule.fallback);
}

std::string keyList(const std::vector<const KeySpec*>& rules) {
  std::string out;
  for (const KeySpec* rule : rules) out += (out.empty() ? "" : ", ") + std::string(rule->name);
  return out;
}

// Checks an object against its keys and returns it with its keys in table order and the
// defaults filled in. Unknown keys are refused: a misspelt key would otherwise be ignored
// without a word.
Json checkObject(const Json& object, const std::vector<const KeySpec*>& rules, const Path& path) {
  if (!object.is_object()) throw FieldError{path, "an object { ... } is needed, found " + describe(object)};
  for (const auto& item : object.items()) {
    const std::string& key = item.key();
    const bool known = std::any_of(rules.begin(), rules.end(), [&](const KeySpec* s) { return key == s->name; });
    if (!known)
      throw FieldError{with(path, key), "unknown key \"" + key + "\"; the keys here are " + keyList(rules)};
  }
  Json out = Json::object();
  for (const KeySpec* rule : rules) {
    const auto it = object.find(rule->name);
    if (it != object.end())
      out[rule->name] = checkValue(*it, *rule, with(path, rule->name));
    else if (rule->required)
      throw FieldError{path, "the key \"" + std::string(rule->name) + "\" is missing"};
    else if (rule->fallback)
      out[rule->name] = fallbackOf(*rule);
  }
  return out;
}

template <std::size_t N>
std::vector<const KeySpec*> rulesOf(const KeySpec (&table)[N]) {
  std::vector<const KeySpec*> out;
  for (const KeySpec& rule : table) out.push_back(&rule);
  return out;
}

std::string kindList() {
  std::string out;
  for (const TagKind& kind : tagKinds()) out += (out.empty() ? "" : ", ") + std::string(kind.type);
  return out;
}

std::unique_ptr<Tag> buildTag(const Json& entry, const Path& path) {
  if (!entry.is_object()) throw FieldError{path, "a tag { \"type\": ... } is needed, found " + describe(entry)};
  const auto type = entry.find("type");
  if (type == entry.end())
    throw FieldError{path, "the key \"type\" is missing; the types are " + kindList()};
  if (!type->is_string()) throw FieldError{with(path, "type"), "a text is needed, found " + describe(*type)};
  const TagKind* kind = findTagKind(type->get<std::string>());
  if (!kind)
    throw FieldError{with(path, "type"),
                     "unknown tag type \"" + type->get<std::string>() + "\"; the types are " + kindList()};

  std::vector<const KeySpec*> rules = rulesOf(kTagCommonKeys);
  for (const KeySpec& rule : kind->keys) rules.push_back(&rule);
  TagSetup setup{kind->type, kind->air, checkObject(entry, rules, path), 0, 0, {}};
  Json& checked = setup.entry;
  if (const auto distance = checked.find("distance");
      distance != checked.end() && *distance != "near" && *distance != "far")
    throw FieldError{with(path, "distance"), "\"near\" or \"far\" is needed, found " + describe(*distance)};

  if (checked.contains("blockSize")) {
    setup.blockSize = checked["blockSize"].get<int>();
    setup.blockCount = checked["blockCount"].get<int>();
    const long size = static_cast<long>(setup.blockSize) * setup.blockCount;
    if (size > kMaxMemory)
      throw FieldError{with(path, "blockCount"), "blockSize x blockCount is " + std::to_string(size) +
                                                     " bytes, more than the " + std::to_string(kMaxMemory) +
                                                     " a tag may hold"};
    setup.memory = *hex::toBytes(checked["memory"].get<std::string>());
    if (static_cast<long>(setup.memory.size()) > size)
      throw FieldError{with(path, "memory"), "the memory holds " + std::to_string(setup.memory.size()) +
                                                 " bytes, more than blockSize x blockCount = " + std::to_string(size)};
    setup.memory.resize(static_cast<std::size_t>(size), 0);
    checked.erase("memory");  // the tag keeps its memory as bytes and writes it back itself
  }
  if (const auto locked = checked.find("lockedBlocks"); locked != checked.end())
    for (std::size_t i = 0; i < locked->size(); ++i)
      if ((*locked)[i].get<long long>() >= setup.blockCount)
        throw FieldError{with(with(path, "lockedBlocks"), i),
                         "block " + (*locked)[i].dump() + " does not exist: the tag has " +
                             std::to_string(setup.blockCount) + " blocks"};
  return kind->make(std::move(setup));
}

std::string operationList() {
  std::string out;
  for (const Operation& op : operations()) out += (out.empty() ? "" : ", ") + std::string(op.name);
  return out;
}

AnswerOverride buildAnswer(const Json& entry, const Path& path) {
  const Json checked = checkObject(entry, rulesOf(kAnswerKeys), path);
  AnswerOverride out;
  out.op = checked["op"].get<std::string>();
  const Operation* op = findOperation(out.op);
  if (!op)
    throw FieldError{with(path, "op"), "unknown operation \"" + out.op + "\"; the operations are " + operationList()};
  out.request = checked["request"].get<std::string>();
  if (!op->hasRequest && !out.request.empty())
    throw FieldError{with(path, "request"), out.op + " takes no request: leave \"request\" out"};
  out.answer = checked["answer"].get<std::string>();
  if (!op->hasAnswer && !out.answer.empty())
    throw FieldError{with(path, "answer"), out.op + " hands back only a status: leave \"answer\" out"};
  out.status = checked["status"].get<std::int32_t>();
  if (checked.contains("times")) {
    out.times = checked["times"].get<long long>();
    out.left = *out.times;
  }
  return out;
}

FieldContents build(const Json& root) {
  if (!root.is_object())
    throw FieldError{{}, "the field must be one JSON object { \"board\": ..., \"tags\": [...] }, found " + describe(root)};
  for (const auto& item : root.items()) {
    const std::string& key = item.key();
    if (std::find_if(std::begin(kTopKeys), std::end(kTopKeys), [&](const char* k) { return key == k; }) ==
        std::end(kTopKeys))
      throw FieldError{{key}, "unknown key \"" + key + "\"; the keys here are board, antenna, tags, answers"};
  }

  const auto member = [&](const char* key) { return root.contains(key) ? root[key] : Json::object(); };
  FieldContents field;
  const Json board = checkObject(member("board"), rulesOf(kBoardKeys), {std::string("board")});
  field.board.present = board["present"].get<bool>();
  field.board.dllRevision = board["dllRevision"].get<std::string>();
  for (const Json& element : board["mcuRevision"]) field.board.mcuRevision.push_back(element.get<std::uint8_t>());
  field.board.chipName = board["chipName"].get<std::string>();
  field.board.interfacePin = board["interfacePin"].get<int>();
  field.board.realTimeIdle = board.contains("realTimeIdle") && board["realTimeIdle"].get<bool>();

  const Json antenna = checkObject(member("antenna"), rulesOf(kAntennaKeys), {std::string("antenna")});
  field.antenna.detectLevel = antenna["detectLevel"].get<int>();

  if (root.contains("tags")) {
    const Json& tags = root["tags"];
    if (!tags.is_array()) throw FieldError{{std::string("tags")}, "a list of tags [ ... ] is needed, found " + describe(tags)};
    for (std::size_t i = 0; i < tags.size(); ++i) field.tags.push_back(buildTag(tags[i], {std::string("tags"), i}));
  }
  if (root.contains("answers")) {
    const Json& answers = root["answers"];
    if (!answers.is_array())
      throw FieldError{{std::string("answers")}, "a list of answers [ ... ] is needed, found " + describe(answers)};
    for (std::size_t i = 0; i < answers.size(); ++i)
      field.answers.push_back(buildAnswer(answers[i], {std::string("answers"), i}));
  }
  return field;
}

// --- where in the text a value stands ------------------------------------------------------
// The parser gives positions only for syntax errors; a wrong value is found again by walking
// the (valid) text along the value's path. Comments are skipped as the parser skips them.

class Locator {
 public:
  explicit Locator(std::string_view text) : t_(text) {}

  // `secondKey`: the path ends in a key given twice; its second value is wanted, not the
  // last one that the parser keeps.
  std::size_t find(const Path& path, bool secondKey = false) {
    pos_ = 0;
    if (t_.substr(0, 3) == "\xEF\xBB\xBF") pos_ = 3;
    skipBlank();
    std::size_t found = pos_;
    for (std::size_t i = 0; i < path.size(); ++i) {
      const Step& step = path[i];
      const bool second = secondKey && i + 1 == path.size();
      const std::size_t at = std::holds_alternative<std::string>(step) ? member(std::get<std::string>(step), second)
                                                                       : element(std::get<std::size_t>(step));
      if (at == npos) break;
      found = pos_ = at;
    }
    return found;
  }

 private:
  static constexpr std::size_t npos = std::string_view::npos;
  char at() const { return pos_ < t_.size() ? t_[pos_] : '\0'; }

  void skipBlank() {
    while (pos_ < t_.size()) {
      const char c = t_[pos_];
      if (c == ' ' || c == '\t' || c == '\n' || c == '\r') {
        ++pos_;
      } else if (c == '/' && pos_ + 1 < t_.size() && t_[pos_ + 1] == '/') {
        while (pos_ < t_.size() && t_[pos_] != '\n') ++pos_;
      } else if (c == '/' && pos_ + 1 < t_.size() && t_[pos_ + 1] == '*') {
        const std::size_t end = t_.find("*/", pos_ + 2);
        pos_ = end == npos ? t_.size() : end + 2;
      } else {
        return;
      }
    }
  }

  // Reads a string at pos_ and returns its text with the simple escapes undone.
  std::string readString() {
    std::string out;
    ++pos_;
    while (pos_ < t_.size() && t_[pos_] != '"') {
      if (t_[pos_] == '\\' && pos_ + 1 < t_.size()) {
        const char e = t_[++pos_];
        const auto code = e == 'u' ? hex::toNumber(t_.substr(pos_ + 1, 4)) : std::nullopt;
        if (code && *code < 0x80) {
          out += static_cast<char>(*code);  // keys are ASCII; other code points never match one
          pos_ += 4;
        } else {
          out += e == 'n' ? '\n' : e == 't' ? '\t' : e == 'r' ? '\r' : e == 'b' ? '\b' : e == 'f' ? '\f' : e;
        }
      } else {
        out += t_[pos_];
      }
      ++pos_;
    }
    ++pos_;
    return out;
  }

  // Skips one value without recursion, so that deep nesting costs no stack.
  void skipValue() {
    int depth = 0;
    do {
      skipBlank();
      const char c = at();
      if (c == '"') {
        readString();
      } else if (c == '{' || c == '[') {
        ++depth;
        ++pos_;
      } else if (c == '}' || c == ']') {
        --depth;
        ++pos_;
      } else if (c == ',' || c == ':') {
        ++pos_;
      } else if (c == '\0') {
        return;
      } else {
        // A word (number, literal), or a stray character such as a lone '/': the text
        // behind a repeated key has not been read by the parser and may be anything.
        const std::size_t start = pos_;
        while (pos_ < t_.size() && std::string_view(",:]} \t\r\n/").find(t_[pos_]) == npos) ++pos_;
        if (pos_ == start) ++pos_;
      }
    } while (depth > 0 && pos_ < t_.size());
  }

  // Position of the value of `key` in the object at pos_: the last one, as the parser keeps
  // it, or the second one when `second`.
  std::size_t member(const std::string& key, bool second = false) {
    if (at() != '{') return npos;
    ++pos_;
    std::size_t found = npos;
    int seen = 0;
    for (skipBlank(); at() == '"'; skipBlank()) {
      const std::string name = readString();
      skipBlank();
      if (at() == ':') ++pos_;
      skipBlank();
      if (name == key && !(second && seen == 2)) {
        found = pos_;
        ++seen;
      }
      skipValue();
      skipBlank();
      if (at() == ',') ++pos_;
    }
    return found;
  }

  std::size_t element(std::size_t index) {
    if (at() != '[') return npos;
    ++pos_;
    skipBlank();
    for (std::size_t i = 0; at() != ']' && at() != '\0'; ++i) {
      if (i == index) return pos_;
      skipValue();
      skipBlank();
      if (at() == ',') ++pos_;
      skipBlank();
    }
    return npos;
  }

  std::string_view t_;
  std::size_t pos_ = 0;
};

std::string located(std::string_view source, std::string_view text, std::size_t offset, const std::string& message) {
  offset = std::min(offset, text.size());
  const std::size_t line = 1 + static_cast<std::size_t>(std::count(text.begin(), text.begin() + static_cast<long>(offset), '\n'));
  const std::size_t lineStart = text.rfind('\n', offset == 0 ? 0 : offset - 1);
  const std::size_t column = lineStart == std::string_view::npos || offset == 0 ? offset + 1 : offset - lineStart;
  return std::string(source) + ": line " + std::to_string(line) + ", column " + std::to_string(column) + ": " + message;
}

// The parser's own text without its "[json.exception...] parse error at line L, column C: "
// prefix: the place is given once, computed here from the byte offset.
std::string parserMessage(const std::string& what) {
  if (const std::size_t colon = what.find(": "); colon != std::string::npos) return what.substr(colon + 2);
  if (what.rfind("[json.exception.", 0) == 0)
    if (const std::size_t end = what.find("] "); end != std::string::npos) return what.substr(end + 2);
  return what;
}

// Builds the document as the library's parser does, with two faults more that it would let
// pass: a key given twice in one object (the parser keeps one value without a word) and a
// number too large for a double. Every fault stops the reading and keeps its place: the
// byte offset for what the parser finds, the path for a repeated key.
class CheckedReader : public nlohmann::detail::json_sax_dom_parser<Json> {
  using Base = nlohmann::detail::json_sax_dom_parser<Json>;

 public:
  explicit CheckedReader(Json& root) : Base(root, false) {}

  bool null() { return value() && Base::null(); }
  bool boolean(bool v) { return value() && Base::boolean(v); }
  bool number_integer(number_integer_t v) { return value() && Base::number_integer(v); }
  bool number_unsigned(number_unsigned_t v) { return value() && Base::number_unsigned(v); }
  bool number_float(number_float_t v, const string_t& s) { return value() && Base::number_float(v, s); }
  bool string(string_t& v) { return value() && Base::string(v); }
  bool binary(binary_t& v) { return value() && Base::binary(v); }
  bool start_object(std::size_t n) {
    if (!value()) return false;
    open_.push_back({true, {}, {}, 0});
    return Base::start_object(n);
  }
  bool key(string_t& k) {
    Open& object = open_.back();
    object.key = k;
    if (!object.keys.insert(k).second) {
      repeated_ = pathHere();
      return false;
    }
    return Base::key(k);
  }
  bool end_object() {
    open_.pop_back();
    return Base::end_object();
  }
  bool start_array(std::size_t n) {
    if (!value()) return false;
    open_.push_back({false, {}, {}, 0});
    return Base::start_array(n);
  }
  bool end_array() {
    open_.pop_back();
    return Base::end_array();
  }
  // `position` counts the characters read, the faulty one included. A number too large is
  // only known once read whole: its place is where it begins.
  template <class Exception>
  bool parse_error(std::size_t position, const std::string& lastToken, const Exception& e) {
    const bool overflow = std::string_view(e.what()).find("number overflow") != std::string_view::npos;
    errorOffset_ = overflow ? position - std::min(position, lastToken.size()) : position == 0 ? 0 : position - 1;
    errorText_ = parserMessage(e.what());
    return false;
  }

  // After a failed reading: the repeated key's path, or the fault's offset and the parser's text.
  const std::optional<Path>& repeated() const { return repeated_; }
  std::size_t errorOffset() const { return errorOffset_; }
  const std::string& errorText() const { return errorText_; }

 private:
  struct Open {
    bool object;
    std::set<std::string> keys;
    std::string key;        // the key whose value is read now
    std::size_t count = 0;  // elements begun so far
  };

  // A value begins: in a list it is the next element.
  bool value() {
    if (!open_.empty() && !open_.back().object) ++open_.back().count;
    return true;
  }
  Path pathHere() const {
    Path path;
    for (const Open& o : open_) {
      if (o.object)
        path.emplace_back(o.key);
      else
        path.emplace_back(o.count - 1);
    }
    return path;
  }

  std::vector<Open> open_;
  std::optional<Path> repeated_;
  std::size_t errorOffset_ = 0;
  std::string errorText_;
};

}  // namespace

FieldContents defaultField() { return build(Json::object()); }

ParseOutcome parseField(std::string_view text, std::string_view sourceName) {
  ParseOutcome out{defaultField(), {}};
  if (text.size() > kMaxFieldFileSize) {
    out.error = std::string(sourceName) + ": the file is larger than " + std::to_string(kMaxFieldFileSize >> 20) + " MiB";
    return out;
  }
  Json root;
  CheckedReader reader(root);
  if (!Json::sax_parse(text.begin(), text.end(), &reader, nlohmann::detail::input_format_t::json, true, true)) {
    if (const auto& path = reader.repeated()) {
      out.error = located(sourceName, text, Locator(text).find(*path, true),
                          pathText(*path) + ": the key \"" + std::get<std::string>(path->back()) +
                              "\" is given twice in one object");
    } else {
      out.error = located(sourceName, text, reader.errorOffset(), reader.errorText());
    }
    return out;
  }
  try {
    out.contents = build(root);
  } catch (const FieldError& e) {
    const std::string where = pathText(e.path);
    out.error = located(sourceName, text, Locator(text).find(e.path), (where.empty() ? "" : where + ": ") + e.message);
  }
  return out;
}

std::string fieldToJson(const FieldContents& field) {
  Json root;
  Json& board = root["board"];
  board["present"] = field.board.present;
  board["dllRevision"] = field.board.dllRevision;
  board["mcuRevision"] = Json::array();
  for (std::uint8_t element : field.board.mcuRevision) board["mcuRevision"].push_back(element);
  board["chipName"] = field.board.chipName;
  board["interfacePin"] = field.board.interfacePin;
  if (field.board.realTimeIdle) board["realTimeIdle"] = true;
  root["antenna"]["detectLevel"] = field.antenna.detectLevel;
  root["tags"] = Json::array();
  for (const auto& tag : field.tags) root["tags"].push_back(tag->toJson());
  // Only a field that has overrides lists them; each shows the times it has left.
  for (const AnswerOverride& entry : field.answers) {
    Json out;
    out["op"] = entry.op;
    if (!entry.request.empty()) out["request"] = entry.request;
    out["answer"] = entry.answer;
    out["status"] = entry.status;
    if (entry.times) out["times"] = entry.left;
    root["answers"].push_back(std::move(out));
  }
  return root.dump(2, ' ', false, Json::error_handler_t::replace);
}

}  // namespace sim
