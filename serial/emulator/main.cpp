// tl42rq-chip-emulator [--field FILE] [--link PATH]
//
// Serves the simulated TL42RQ chip on a pseudo-terminal, byte for byte as the chip answers
// on its UART, so that the serial driver (and anything else that speaks the chip's frames)
// can be run without hardware. The first line of standard output is the device path to
// open: the pseudo-terminal, or PATH when --link asks for a symbolic link to it, which is
// kept pointing at the live pseudo-terminal after a hang-up.
//
// Misbehaviour for tests, one line each on standard input, each acknowledged by the line
// "ok " + the command on standard output once it is in force:
//   normal       answer every command at once (the start state)
//   silent       read commands, answer none
//   slow MS      answer byte by byte, MS milliseconds between two bytes
//   garbage      put noise bytes on the line before and after every answer
//   half         answer only the first half of the next command's answer
//   hangup MS    at the next command: send half its answer, close the pseudo-terminal,
//                wait MS milliseconds, open a new one (and move the link to it), then
//                print "back " + the device path
//   quit         end (so does the end of standard input when it is a pipe: the test or
//                program that started the emulator has gone)
#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <sstream>
#include <string>
#include <thread>

#include "serial/emulator/emulatedchip.h"
#include "serial/frames.h"

namespace {

// Bytes that open no answer of the chip, as a line glitch might produce them.
const hex::Bytes kNoise = {0xFF, 0xFE, 0x3C, 0xA5, 0x7E};

struct Pty {
  int master = -1;
  int slave = -1;  // held open so that the master never sees the line hang up between users
  std::string path;
};

bool openPty(Pty& pty) {
  pty.master = posix_openpt(O_RDWR | O_NOCTTY);
  if (pty.master < 0 || grantpt(pty.master) != 0 || unlockpt(pty.master) != 0) return false;
  const char* name = ptsname(pty.master);
  if (!name) return false;
  pty.path = name;
  pty.slave = ::open(name, O_RDWR | O_NOCTTY);
  if (pty.slave < 0) return false;
  termios tio{};
  tcgetattr(pty.slave, &tio);
  cfmakeraw(&tio);
  tcsetattr(pty.slave, TCSANOW, &tio);
  return true;
}

void closePty(Pty& pty) {
  if (pty.master >= 0) ::close(pty.master);
  if (pty.slave >= 0) ::close(pty.slave);
  pty.master = pty.slave = -1;
}

// Points `link` at `target`, replacing it in one step so that an opener never finds it missing.
bool placeLink(const std::string& link, const std::string& target) {
  const std::string temporary = link + ".new";
  ::unlink(temporary.c_str());
  return ::symlink(target.c_str(), temporary.c_str()) == 0 && ::rename(temporary.c_str(), link.c_str()) == 0;
}

void say(const std::string& line) {
  std::cout << line << '\n' << std::flush;
}

void writeAll(int fd, const std::uint8_t* data, std::size_t size) {
  while (size > 0) {
    const ssize_t n = ::write(fd, data, size);
    if (n <= 0) return;
    data += n;
    size -= static_cast<std::size_t>(n);
  }
}

struct Behaviour {
  bool silent = false;
  int slowMs = 0;
  bool garbage = false;
  bool halfNext = false;
  int hangupMs = -1;  // >= 0: hang up at the next command
};

class Emulator {
 public:
  Emulator(std::string fieldPath, std::string link) : chip_(fieldPath), link_(std::move(link)) {}

  int run() {
    if (!chip_.fieldError().empty()) std::cerr << "field: " << chip_.fieldError() << '\n';
    if (!openPty(pty_) || (!link_.empty() && !placeLink(link_, pty_.path))) {
      std::cerr << "cannot open a pseudo-terminal: " << std::strerror(errno) << '\n';
      return 1;
    }
    say(devicePath());
    struct stat in {};
    const bool controlledThroughPipe = ::fstat(0, &in) == 0 && (S_ISFIFO(in.st_mode) || S_ISSOCK(in.st_mode));
    bool watchInput = true;
    for (;;) {
      pollfd fds[2] = {{pty_.master, POLLIN, 0}, {watchInput ? 0 : -1, POLLIN, 0}};
      if (::poll(fds, 2, -1) < 0) {
        if (errno == EINTR) continue;
        return 1;
      }
      if (fds[1].revents & (POLLIN | POLLHUP)) {
        // Read the descriptor itself: a buffered stream would hide a second line from poll.
        char chunk[256];
        const ssize_t n = ::read(0, chunk, sizeof chunk);
        if (n <= 0 && controlledThroughPipe) break;  // whoever started the emulator has gone
        if (n <= 0) watchInput = false;              // /dev/null or a closed terminal: serve on
        if (n > 0) controlText_.append(chunk, static_cast<std::size_t>(n));
        bool quit = false;
        for (std::size_t end; !quit && (end = controlText_.find('\n')) != std::string::npos;) {
          const std::string line = controlText_.substr(0, end);
          controlText_.erase(0, end + 1);
          quit = !control(line);
        }
        if (quit) break;
      }
      if (fds[0].revents & POLLIN) serveLine();
    }
    closePty(pty_);
    if (!link_.empty()) ::unlink(link_.c_str());
    return 0;
  }

 private:
  std::string devicePath() const { return link_.empty() ? pty_.path : link_; }

  // False for "quit".
  bool control(const std::string& line) {
    std::istringstream in(line);
    std::string word;
    in >> word;
    int ms = 0;
    if (word == "normal") {
      behaviour_ = Behaviour{};
    } else if (word == "silent") {
      behaviour_.silent = true;
    } else if (word == "slow" && in >> ms && ms >= 0) {
      behaviour_.slowMs = ms;
    } else if (word == "garbage") {
      behaviour_.garbage = true;
    } else if (word == "half") {
      behaviour_.halfNext = true;
    } else if (word == "hangup" && in >> ms && ms >= 0) {
      behaviour_.hangupMs = ms;
    } else if (word == "quit") {
      say("ok quit");
      return false;
    } else {
      say("unknown " + line);
      return true;
    }
    say("ok " + line);
    return true;
  }

  void serveLine() {
    std::uint8_t buffer[512];
    const ssize_t n = ::read(pty_.master, buffer, sizeof buffer);
    if (n <= 0) return;
    for (ssize_t i = 0; i < n; ++i) {
      const auto frame = commands_.feed(buffer[i]);
      if (frame) answer(*frame);
    }
  }

  void answer(const hex::Bytes& frame) {
    const hex::Bytes bytes = chip_.answer(frame);
    if (behaviour_.hangupMs >= 0) return hangUp(bytes);
    if (behaviour_.silent) return;
    if (behaviour_.halfNext) {
      behaviour_.halfNext = false;
      return send(bytes.data(), bytes.size() / 2);
    }
    if (behaviour_.garbage) send(kNoise.data(), kNoise.size());
    send(bytes.data(), bytes.size());
    if (behaviour_.garbage) send(kNoise.data(), kNoise.size());
  }

  void send(const std::uint8_t* data, std::size_t size) {
    if (behaviour_.slowMs <= 0) return writeAll(pty_.master, data, size);
    for (std::size_t i = 0; i < size; ++i) {
      if (i > 0) std::this_thread::sleep_for(std::chrono::milliseconds(behaviour_.slowMs));
      writeAll(pty_.master, data + i, 1);
    }
  }

  void hangUp(const hex::Bytes& bytes) {
    const int away = behaviour_.hangupMs;
    behaviour_.hangupMs = -1;
    send(bytes.data(), bytes.size() / 2);
    closePty(pty_);
    commands_.clear();
    std::this_thread::sleep_for(std::chrono::milliseconds(away));
    if (!openPty(pty_) || (!link_.empty() && !placeLink(link_, pty_.path))) {
      std::cerr << "cannot open a pseudo-terminal again\n";
      std::exit(1);
    }
    say("back " + devicePath());
  }

  serialline::EmulatedChip chip_;
  std::string link_;
  Pty pty_;
  serialline::CommandParser commands_;
  Behaviour behaviour_;
  std::string controlText_;
};

int usage() {
  std::cerr << "usage: tl42rq-chip-emulator [--field FILE] [--link PATH]\n";
  return 2;
}

}  // namespace

int main(int argc, char** argv) {
  std::string field;
  std::string link;
  for (int i = 1; i < argc; ++i) {
    const std::string arg = argv[i];
    if ((arg == "--field" || arg == "--link") && i + 1 < argc) {
      (arg == "--field" ? field : link) = argv[++i];
    } else {
      return usage();
    }
  }
  return Emulator(field, link).run();
}
