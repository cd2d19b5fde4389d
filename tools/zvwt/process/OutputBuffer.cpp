#include "process/OutputBuffer.h"

#include <cerrno>
#include <cstdio>

#include "process/Failure.h"

namespace zvwttool {
namespace {

constexpr std::size_t bufferSize = std::size_t{256} * 1024;
constexpr std::size_t pieceSize = std::size_t{16} * 1024;  // of what a terminal gets

}  // namespace

OutputBuffer::OutputBuffer() : buffer_(bufferSize) {
  // This buffer is the only one: what it hands over is written at once.
  (void)std::setvbuf(stdout, nullptr, _IONBF, 0);
}

void OutputBuffer::append(std::size_t count, char byte) {
  for (std::size_t i = 0; i < count; ++i) {
    append(byte);
  }
}

void OutputBuffer::makeRoom(std::string_view text) {
  flush();
  if (text.size() > buffer_.size()) {
    write(text);
    return;
  }
  text.copy(buffer_.data(), text.size());
  used_ = text.size();
}

void OutputBuffer::flush() {
  write({buffer_.data(), used_});
  used_ = 0;
}

void OutputBuffer::flushAll() {
  flush();
  if (terminalText_.has_value()) {
    writeBytes(terminalText_->end());
  }
}

void OutputBuffer::write(std::string_view text) {
  if (!terminalText_.has_value()) {
    writeBytes(text);
    return;
  }
  while (!text.empty() && !failed()) {
    const std::string_view piece = text.substr(0, pieceSize);
    writeBytes(terminalText_->add(piece));
    text.remove_prefix(piece.size());
  }
}

void OutputBuffer::writeBytes(std::string_view bytes) {
  if (failed() || bytes.empty()) {
    return;
  }
  errno = 0;
  if (std::fwrite(bytes.data(), 1, bytes.size(), stdout) != bytes.size()) {
    errorNumber_ = errno != 0 ? errno : EIO;
  }
}

void OutputBuffer::finish() {
  flushAll();
  if (!failed() && std::fflush(stdout) != 0) {
    errorNumber_ = errno;
  }
  if (errorNumber_ == EPIPE) {
    throw Failure(ExitCode::inputOutput, "");
  }
  if (failed()) {
    throw Failure(ExitCode::inputOutput,
                  systemFailure(errorNumber_, "cannot write to standard output: ").what());
  }
}

}  // namespace zvwttool
