#include "support/UiTestSupport.h"

#include <QAbstractButton>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QTemporaryDir>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>

#include "reader/TraceLog.h"
#include "shell/Product.h"

namespace uitest {

namespace {
template <typename Fn>
Fn symbol(reader::ReaderDriver& d, const char* name) {
  auto* lib = dynamic_cast<reader::LibraryDriver*>(&d);
  return lib ? reinterpret_cast<Fn>(lib->resolve(name)) : nullptr;
}
}  // namespace

SimulatedBoard::SimulatedBoard() {
  driver_ = reader::LibraryDriver::load(SIM_LIBRARY);
  loaded_ = driver_->isSimulated();
  reader::setDriver(driver_.get());
}

SimulatedBoard::~SimulatedBoard() { reader::setDriver(nullptr); }

int SimulatedBoard::loadField(const std::string& jsonTextOrPath) {
  auto fn = symbol<std::int32_t (*)(const char*)>(*driver_, "TL42RQSim_LoadField");
  return fn ? fn(jsonTextOrPath.c_str()) : -1;
}

int SimulatedBoard::setBoardPresent(bool present) {
  auto fn = symbol<std::int32_t (*)(std::int32_t)>(*driver_, "TL42RQSim_SetBoardPresent");
  return fn ? fn(present ? 1 : 0) : -1;
}

int SimulatedBoard::reset() {
  auto fn = symbol<std::int32_t (*)()>(*driver_, "TL42RQSim_Reset");
  return fn ? fn() : -1;
}

std::string SimulatedBoard::dumpField() {
  auto fn = symbol<std::int32_t (*)(char*, std::int32_t)>(*driver_, "TL42RQSim_DumpField");
  if (!fn) return {};
  std::string out(1 << 20, '\0');
  const int n = fn(out.data(), static_cast<std::int32_t>(out.size()));
  out.resize(n > 0 ? static_cast<std::size_t>(n) : 0);
  return out;
}

std::string SimulatedBoard::lastError() {
  auto fn = symbol<const char* (*)()>(*driver_, "TL42RQSim_LastError");
  return fn && fn() ? fn() : "";
}

FixedTime::FixedTime() { reader::setClock(std::make_shared<reader::FixedClock>(reader::DateTime{2026, 11, 21, 10, 20, 30})); }
FixedTime::~FixedTime() { reader::setClock(nullptr); }

std::string fixture(const std::string& name) { return std::string(TEST_FIXTURES) + "/" + name; }

std::string fieldWithAnswers(const std::string& fixtureName, const std::vector<Answer>& answers) {
  using Json = nlohmann::ordered_json;
  std::ifstream in(fixture(fixtureName), std::ios::binary);
  if (!in) qFatal("fixture %s missing", fixtureName.c_str());
  Json field = Json::parse(std::string(std::istreambuf_iterator<char>(in), {}), nullptr, true, true);
  Json& list = field["answers"] = Json::array();
  for (const Answer& a : answers) {
    Json entry{{"op", a.op}};
    if (!a.request.empty()) entry["request"] = a.request;
    if (!a.answer.empty()) entry["answer"] = a.answer;
    entry["status"] = a.status;
    if (a.times >= 0) entry["times"] = a.times;
    list.push_back(std::move(entry));
  }
  // The board follows a field loaded from a file, so every file stays until the program ends.
  static QTemporaryDir dir;
  static int count = 0;
  const std::string path = dir.path().toStdString() + "/field_answers_" + std::to_string(++count) + ".json";
  std::ofstream(path, std::ios::binary | std::ios::trunc) << field.dump(2);
  return path;
}

int loadFieldWithAnswers(SimulatedBoard& board, const std::string& fixtureName, const std::vector<Answer>& answers) {
  return board.loadField(fieldWithAnswers(fixtureName, answers));
}

void chooseProduct(const std::string& reference) {
  QFile f(QStringLiteral(TL42RQ_SOURCE_DIR "/data/TL42RQ_products.ini"));
  if (!f.open(QIODevice::ReadOnly)) qFatal("product file missing");
  const auto p = shell::findProduct(f.readAll().toStdString(), reference);
  if (!p) qFatal("no product %s", reference.c_str());
  shell::currentProduct() = *p;
  shell::productSizes() = shell::deriveSizes(*p);
  memoryBuffer().Clear();
}

QString shows(QObject* root, const QString& name) {
  QObject* o = find<QObject>(root, name);
  if (auto* e = qobject_cast<QLineEdit*>(o)) return e->text();
  if (auto* l = qobject_cast<QLabel*>(o)) return l->text();
  if (auto* t = qobject_cast<QPlainTextEdit*>(o)) return t->toPlainText();
  if (auto* b = qobject_cast<QAbstractButton*>(o)) return b->text() + (b->isChecked() ? " [x]" : "");
  qFatal("control %s shows nothing a test can read", qPrintable(name));
}

QStringList shows(QObject* root, const QStringList& names) {
  QStringList out;
  for (const QString& n : names) out << shows(root, n);
  return out;
}

TwoRuns goodThen(QObject* root, const QStringList& names, const std::function<void()>& command,
                 const std::function<void()>& then) {
  return goodThen(root, names, command, then, command);
}

TwoRuns goodThen(QObject* root, const QStringList& names, const std::function<void()>& first,
                 const std::function<void()>& then, const std::function<void()>& second) {
  TwoRuns r;
  first();
  r.good = shows(root, names);
  then();
  second();
  r.after = shows(root, names);
  return r;
}

}  // namespace uitest
