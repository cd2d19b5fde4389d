#include "formats/CsvInput.h"

#include <cerrno>

#include "process/Failure.h"
#include "process/Progress.h"
#include "process/System.h"

namespace zvwttool {
namespace {

constexpr std::size_t pieceSize = std::size_t{64} * 1024;
constexpr std::string_view copying = "its temporary copy: ";

/// In the first of the directories that takes it. Null, with the system's code for the last one in
/// *errorNumber, when none does.
std::FILE* openCopy(const std::vector<std::string>& directories, int* errorNumber) {
  for (const std::string& directory : directories) {
    if (std::FILE* file = openNamelessFile(directory); file != nullptr) {
      return file;
    }
    *errorNumber = errno;
  }
  return nullptr;
}

}  // namespace

void CsvInput::CloseFile::operator()(std::FILE* file) const noexcept {
  if (file != stdin) {
    (void)std::fclose(file);  // nothing in it has to last
  }
}

CsvInput::CsvInput(const std::string& file, const std::vector<std::string>& copyDirectories)
    : name_(file == "-" ? "standard input" : file),
      file_(file == "-" ? stdin : openForReading(file)) {
  if (file_ == nullptr) {
    fail(errno);
  }
  if (std::fgetpos(file_.get(), &start_) != 0) {
    replaceByCopy(copyDirectories);
  }
  size_ = bytesAhead(file_.get());
}

void CsvInput::rewind() {
  if (std::fsetpos(file_.get(), &start_) != 0) {
    fail(errno);
  }
  bytesRead_ = 0;
}

std::size_t CsvInput::read(char* buffer, std::size_t size) {
  const std::size_t received = std::fread(buffer, 1, size, file_.get());
  if (received < size && std::ferror(file_.get()) != 0) {
    fail(errno);
  }
  bytesRead_ += static_cast<std::int64_t>(received);
  return received;
}

void CsvInput::replaceByCopy(const std::vector<std::string>& directories) {
  int errorNumber = 0;
  FileHandle copy(openCopy(directories, &errorNumber));
  if (copy == nullptr) {
    fail(errorNumber, copying);
  }
  if (std::fgetpos(copy.get(), &start_) != 0) {
    fail(errno, copying);
  }
  copyTo(copy.get());
  file_ = std::move(copy);
  rewind();
}

void CsvInput::copyTo(std::FILE* copy) {
  std::vector<char> piece(pieceSize);
  Progress progress("reading", ProgressUnit::bytes, -1);
  std::size_t received = piece.size();
  while (received == piece.size()) {
    received = read(piece.data(), piece.size());
    if (std::fwrite(piece.data(), 1, received, copy) != received) {
      fail(errno, copying);
    }
    progress.show(bytesRead_);
  }
  if (std::fflush(copy) != 0) {
    fail(errno, copying);
  }
}

void CsvInput::fail(int errorNumber, std::string_view circumstance) const {
  throw systemFailure(errorNumber, name_ + ": " + std::string(circumstance));
}

}  // namespace zvwttool
