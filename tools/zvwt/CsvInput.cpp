#include "CsvInput.h"

#include <cerrno>

#include "Diagnostics.h"
#include "System.h"

namespace zvwttool {
namespace {

constexpr std::size_t pieceSize = std::size_t{64} * 1024;
constexpr std::string_view copying = "its temporary copy: ";

}  // namespace

void CsvInput::CloseFile::operator()(std::FILE* file) const noexcept {
  if (file != stdin) {
    (void)std::fclose(file);  // nothing in it has to last
  }
}

bool CsvInput::open(const std::string& file, const std::vector<std::string>& copyDirectories,
                    std::string* error) {
  const bool isStandardInput = file == "-";
  name_ = isStandardInput ? "standard input" : file;
  file_.reset(isStandardInput ? stdin : openForReading(file));
  if (file_ == nullptr) {
    return fail(errno, "", error);
  }
  const bool canBeReadAgain = std::fgetpos(file_.get(), &start_) == 0;
  return canBeReadAgain || replaceByCopy(copyDirectories, error);
}

bool CsvInput::rewind(std::string* error) {
  return std::fsetpos(file_.get(), &start_) == 0 || fail(errno, "", error);
}

std::size_t CsvInput::read(char* buffer, std::size_t size, std::string* error) {
  const std::size_t received = std::fread(buffer, 1, size, file_.get());
  if (received < size && std::ferror(file_.get()) != 0) {
    (void)fail(errno, "", error);
  }
  return received;
}

bool CsvInput::replaceByCopy(const std::vector<std::string>& directories, std::string* error) {
  int errorNumber = 0;
  FileHandle copy(openNamelessFile(directories, &errorNumber));
  if (copy == nullptr) {
    return fail(errorNumber, copying, error);
  }
  if (std::fgetpos(copy.get(), &start_) != 0) {
    return fail(errno, copying, error);
  }
  if (!copyTo(copy.get(), error)) {
    return false;
  }
  file_ = std::move(copy);
  return rewind(error);
}

bool CsvInput::copyTo(std::FILE* copy, std::string* error) {
  std::vector<char> piece(pieceSize);
  std::size_t received = piece.size();
  while (received == piece.size()) {
    received = read(piece.data(), piece.size(), error);
    if (!error->empty()) {
      return false;
    }
    if (std::fwrite(piece.data(), 1, received, copy) != received) {
      return fail(errno, copying, error);
    }
  }
  return std::fflush(copy) == 0 || fail(errno, copying, error);
}

bool CsvInput::fail(int errorNumber, std::string_view circumstance, std::string* error) const {
  *error = name_ + ": ";
  *error += circumstance;
  *error += systemErrorText(errorNumber);
  return false;
}

}  // namespace zvwttool
