#include "reader/Drivers.h"

#include <QFileInfo>
#include <QLibrary>
#include <cstdlib>
#include <algorithm>
#include <cstring>

#include "common/InstallPaths.h"

namespace reader {

namespace {
using StatusOnlyFn = std::int32_t (*)();
using AnswerOnlyFn = std::int32_t (*)(char*);
using RequestFn = std::int32_t (*)(const char*, char*);

ReaderDriver*& currentDriver() {
  static ReaderDriver* current = nullptr;
  return current;
}
}  // namespace

ReaderDriver& driver() {
  static MissingDriver none("no driver loaded");
  ReaderDriver* d = currentDriver();
  return d ? *d : none;
}

void setDriver(ReaderDriver* d) { currentDriver() = d; }

std::string defaultLibraryPath(const std::string& programDirectory) {
  if (const char* env = std::getenv("TL42RQ_DRIVER"); env && *env) return env;
  return install::firstExisting(install::driverPlaces(programDirectory),
                                [](const std::string& p) { return QFileInfo::exists(QString::fromStdString(p)); });
}

LibraryDriver::~LibraryDriver() = default;

std::unique_ptr<ReaderDriver> LibraryDriver::load(const std::string& path) {
  std::unique_ptr<LibraryDriver> d(new LibraryDriver);
  d->path_ = path;
  d->library_ = std::make_unique<QLibrary>(QString::fromStdString(path));
  if (!QFileInfo::exists(QString::fromStdString(path)))
    return std::make_unique<MissingDriver>("driver " + path + " not loaded: file not found");
  if (!d->library_->load())
    return std::make_unique<MissingDriver>("driver " + path + " not loaded: " +
                                           d->library_->errorString().toStdString());
  for (const OpInfo& op : kOperations) {
    void* fn = reinterpret_cast<void*>(d->library_->resolve(op.symbol));
    if (!fn)
      return std::make_unique<MissingDriver>("driver " + path + " not usable: symbol " + op.symbol +
                                             " missing");
    d->functions_[static_cast<std::size_t>(op.op)] = fn;
  }
  d->simulated_ = d->resolve("TL42RQSim_LoadField") != nullptr;
  return d;
}

void* LibraryDriver::resolve(const char* symbol) const {
  return reinterpret_cast<void*>(library_->resolve(symbol));
}

std::string LibraryDriver::description() const {
  return path_ + (simulated_ ? " (simulated board)" : "");
}

std::int32_t LibraryDriver::call(Op op, const char* request, char* answer) {
  void* fn = functions_[static_cast<std::size_t>(op)];
  switch (info(op).shape) {
    case Shape::StatusOnly:
      return reinterpret_cast<StatusOnlyFn>(fn)();
    case Shape::AnswerOnly:
      return reinterpret_cast<AnswerOnlyFn>(fn)(answer);
    case Shape::RequestAndAnswer:
      return reinterpret_cast<RequestFn>(fn)(request ? request : "", answer);
  }
  return kStatusNoBoard;
}

std::int32_t FakeDriver::call(Op op, const char* request, char* answer) {
  const std::string req = info(op).shape == Shape::RequestAndAnswer && request ? request : "";
  calls_.push_back({op, req});
  Reply reply;
  auto& queue = replies_[static_cast<std::size_t>(op)];
  if (!queue.empty()) {
    reply = std::move(queue.front());
    queue.pop_front();
  } else if (handler_) {
    reply = handler_(op, req);
  }
  if (!raw_.empty() && answer) {
    std::memcpy(answer, raw_.data(), std::min(raw_.size(), kGuardedAnswerSize - 1));
  } else if (answer && info(op).shape != Shape::StatusOnly) {
    std::memcpy(answer, reply.answer.data(), std::min(reply.answer.size(), kAnswerSize - 1));
  }
  return reply.status;
}

std::vector<FakeDriver::Call> FakeDriver::callsOf(Op op) const {
  std::vector<Call> out;
  for (const Call& c : calls_)
    if (c.op == op) out.push_back(c);
  return out;
}

}  // namespace reader
