// The drivers the program can run on.
#pragma once

#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "reader/ReaderDriver.h"

class QLibrary;

namespace reader {

// Answers status 5 with an empty answer for everything: the program runs on without a
// board library and says why in the status bar.
class MissingDriver final : public ReaderDriver {
 public:
  explicit MissingDriver(std::string reason) : reason_(std::move(reason)) {}
  std::int32_t call(Op, const char*, char*) override { return kStatusNoBoard; }
  std::string description() const override { return reason_; }

 private:
  std::string reason_;
};

// The board's library, resolved at run time.
class LibraryDriver final : public ReaderDriver {
 public:
  ~LibraryDriver() override;
  // Loads the library and resolves the fifteen operations. On failure returns a
  // MissingDriver that names the file and the reason.
  static std::unique_ptr<ReaderDriver> load(const std::string& path);
  std::int32_t call(Op op, const char* request, char* answer) override;
  std::string description() const override;
  bool isSimulated() const override { return simulated_; }
  // Resolves a further symbol of the same library (the simulated board's controls).
  void* resolve(const char* symbol) const;

 private:
  LibraryDriver() = default;
  std::unique_ptr<QLibrary> library_;
  std::string path_;
  bool simulated_ = false;
  std::array<void*, kOperations.size()> functions_{};
};

// Where the program looks for the board's library: the file named by TL42RQ_DRIVER,
// else the library beside the program, else the one in the installed private library
// folder (install::driverPlaces); the one beside the program when neither exists.
std::string defaultLibraryPath(const std::string& programDirectory);

// Records every call and plays canned answers, in order per operation, or through a
// handler. With nothing queued an operation answers status 0 and an empty text.
class FakeDriver final : public ReaderDriver {
 public:
  struct Call {
    Op op;
    std::string request;
  };
  struct Reply {
    std::int32_t status = kStatusOk;
    std::string answer;
  };
  using Handler = std::function<Reply(Op, const std::string&)>;

  void queue(Op op, Reply reply) { replies_[static_cast<std::size_t>(op)].push_back(std::move(reply)); }
  void queue(Op op, std::int32_t status, std::string answer) { queue(op, Reply{status, std::move(answer)}); }
  void setHandler(Handler handler) { handler_ = std::move(handler); }
  // Writes this many raw bytes into the answer buffer, whatever they are; for tests of
  // libraries that misbehave.
  void setRawAnswer(std::string bytes) { raw_ = std::move(bytes); }

  std::int32_t call(Op op, const char* request, char* answer) override;
  std::string description() const override { return "fake driver"; }

  const std::vector<Call>& calls() const { return calls_; }
  std::vector<Call> callsOf(Op op) const;
  void clearCalls() { calls_.clear(); }

 private:
  std::array<std::deque<Reply>, kOperations.size()> replies_;
  Handler handler_;
  std::string raw_;
  std::vector<Call> calls_;
};

// The driver in use by the whole program. Set once at start (or by a test).
ReaderDriver& driver();
void setDriver(ReaderDriver* driver);

}  // namespace reader
