#include "serial/line.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <thread>

namespace serialline {

namespace {

int numberFromEnvironment(const char* name, int fallback, int low, int high) {
  const char* text = std::getenv(name);
  if (!text || !*text) return fallback;
  char* end = nullptr;
  const long value = std::strtol(text, &end, 10);
  if (*end != '\0' || value < low || value > high) return fallback;
  return static_cast<int>(value);
}

// The terminal interface knows rates only as constants.
speed_t speedOf(int baud) {
  struct Row {
    int baud;
    speed_t speed;
  };
  static constexpr Row kRates[] = {{1200, B1200},       {2400, B2400},       {4800, B4800},       {9600, B9600},
                                   {19200, B19200},     {38400, B38400},     {57600, B57600},     {115200, B115200},
                                   {230400, B230400},   {460800, B460800},   {500000, B500000},   {576000, B576000},
                                   {921600, B921600},   {1000000, B1000000}, {1152000, B1152000}, {1500000, B1500000},
                                   {2000000, B2000000}, {2500000, B2500000}, {3000000, B3000000}};
  for (const Row& r : kRates)
    if (r.baud == baud) return r.speed;
  return B0;
}

using Clock = std::chrono::steady_clock;

int msLeft(Clock::time_point deadline) {
  const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
  return left > 0 ? static_cast<int>(left) : 0;
}

}  // namespace

Settings Settings::fromEnvironment() {
  Settings s;
  if (const char* port = std::getenv("TL42RQ_SERIAL_PORT")) s.port = port;
  s.baud = numberFromEnvironment("TL42RQ_SERIAL_BAUD", 57600, 1, 4000000);
  s.stopBits = numberFromEnvironment("TL42RQ_SERIAL_STOPBITS", 2, 1, 2);
  s.timeoutMs = numberFromEnvironment("TL42RQ_SERIAL_TIMEOUT_MS", 1000, 1, 3600000);
  return s;
}

bool PosixLine::open() {
  close();
  const speed_t speed = speedOf(settings_.baud);
  if (settings_.port.empty() || speed == B0) return false;
  const int fd = ::open(settings_.port.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
  if (fd < 0) return false;
  termios tio{};
  if (!isatty(fd) || tcgetattr(fd, &tio) != 0) {
    ::close(fd);
    return false;
  }
  cfmakeraw(&tio);
  tio.c_cflag &= ~(CSIZE | PARENB | CSTOPB | CRTSCTS);
  tio.c_cflag |= CS8 | CLOCAL | CREAD;
  if (settings_.stopBits == 2) tio.c_cflag |= CSTOPB;
  tio.c_iflag &= ~(IXON | IXOFF | IXANY);
  tio.c_cc[VMIN] = 0;
  tio.c_cc[VTIME] = 0;
  cfsetispeed(&tio, speed);
  cfsetospeed(&tio, speed);
  if (tcsetattr(fd, TCSANOW, &tio) != 0) {
    ::close(fd);
    return false;
  }
  fd_ = fd;
  setRts(false);  // IRQ_IN rests high
  tcflush(fd_, TCIOFLUSH);
  return true;
}

void PosixLine::close() {
  if (fd_ >= 0) ::close(fd_);
  fd_ = -1;
}

bool PosixLine::write(const hex::Bytes& bytes, int timeoutMs) {
  if (fd_ < 0) return false;
  const auto deadline = Clock::now() + std::chrono::milliseconds(timeoutMs);
  std::size_t sent = 0;
  while (sent < bytes.size()) {
    const ssize_t n = ::write(fd_, bytes.data() + sent, bytes.size() - sent);
    if (n > 0) {
      sent += static_cast<std::size_t>(n);
      continue;
    }
    if (n < 0 && errno != EAGAIN && errno != EINTR) return false;
    pollfd p{fd_, POLLOUT, 0};
    const int left = msLeft(deadline);
    if (left == 0 || ::poll(&p, 1, left) <= 0 || (p.revents & (POLLERR | POLLHUP | POLLNVAL))) return false;
  }
  return true;
}

ReadResult PosixLine::read(hex::Bytes& out, int timeoutMs) {
  if (fd_ < 0) return ReadResult::HungUp;
  const auto deadline = Clock::now() + std::chrono::milliseconds(timeoutMs);
  for (;;) {
    pollfd p{fd_, POLLIN, 0};
    const int ready = ::poll(&p, 1, msLeft(deadline));
    if (ready < 0 && errno == EINTR) continue;
    if (ready < 0 || (p.revents & POLLNVAL)) return ReadResult::HungUp;
    if (ready == 0) return ReadResult::TimedOut;
    std::uint8_t buffer[256];
    const ssize_t n = ::read(fd_, buffer, sizeof buffer);
    if (n > 0) {
      out.insert(out.end(), buffer, buffer + n);
      return ReadResult::Data;
    }
    if (n < 0 && (errno == EAGAIN || errno == EINTR)) continue;
    // Ready yet nothing to read, or an I/O error: the other end is gone.
    return ReadResult::HungUp;
  }
}

void PosixLine::discardInput() {
  if (fd_ >= 0) tcflush(fd_, TCIFLUSH);
}

bool PosixLine::setRts(bool asserted) {
  int bits = TIOCM_RTS;
  return ::ioctl(fd_, asserted ? TIOCMBIS : TIOCMBIC, &bits) == 0;
}

// RTS asserted drives the adapter's RTS pin low; the chip wakes on the falling edge of
// IRQ_IN and wants it low for some microseconds: a millisecond is ample.
bool PosixLine::pulseWakeUp() {
  if (fd_ < 0 || !setRts(true)) return false;
  std::this_thread::sleep_for(std::chrono::milliseconds(1));
  setRts(false);
  return true;
}

}  // namespace serialline
