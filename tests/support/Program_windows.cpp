/// The Windows half; Program_posix.cpp is its twin.
#include <fcntl.h>
#include <io.h>
#include <windows.h>

#include <array>
#include <cstdlib>
#include <filesystem>
#include <thread>

#include "support/Program.h"
#include "support/Wide_windows.h"

namespace {

HANDLE handle(std::intptr_t value) { return reinterpret_cast<HANDLE>(value); }

HANDLE openStream(const std::filesystem::path& path, DWORD access) {
  SECURITY_ATTRIBUTES inherited = {sizeof inherited, nullptr, TRUE};
  return CreateFileW(path.c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE, &inherited,
                     access == GENERIC_READ ? OPEN_EXISTING : CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL,
                     nullptr);
}

/// The program's end of its stream `number`; *ours gets this one, if it is a pipe.
HANDLE connect(DWORD number, const Program::Stream& stream, std::intptr_t* ours) {
  using Kind = Program::Stream::Kind;
  const bool isInput = number == STD_INPUT_HANDLE;
  const DWORD access = isInput ? GENERIC_READ : GENERIC_WRITE;
  switch (stream.kind) {
    case Kind::sameAsTest: {
      HANDLE same = nullptr;
      DuplicateHandle(GetCurrentProcess(), GetStdHandle(number), GetCurrentProcess(), &same, 0,
                      TRUE, DUPLICATE_SAME_ACCESS);
      return same;
    }
    case Kind::file:
      return openStream(stream.path, access);
    case Kind::refusing:
      return openStream("NUL", GENERIC_READ);
    case Kind::pipe: {
      HANDLE reading = nullptr;
      HANDLE writing = nullptr;
      constexpr DWORD unread = 1 << 16;  // bytes that can wait in it, as many as elsewhere
      if (CreatePipe(&reading, &writing, nullptr, unread) == FALSE) {
        std::abort();
      }
      HANDLE const theirs = isInput ? reading : writing;
      *ours = reinterpret_cast<std::intptr_t>(isInput ? writing : reading);
      SetHandleInformation(theirs, HANDLE_FLAG_INHERIT, HANDLE_FLAG_INHERIT);
      return theirs;
    }
    default:
      return openStream("NUL", access);
  }
}

/// As programs take their command lines apart again.
std::wstring quoted(const std::string& word) {
  std::wstring text = L"\"";
  std::size_t backslashes = 0;
  for (const std::wstring wide = toWide(word); const wchar_t unit : wide) {
    if (unit == L'"') {
      text.append(backslashes + 1, L'\\');
    }
    backslashes = unit == L'\\' ? backslashes + 1 : 0;
    text += unit;
  }
  return text.append(backslashes, L'\\') + L'"';
}

}  // namespace

Program::Program(const std::vector<std::string>& words, const Streams& streams) {
  std::wstring line;
  for (const std::string& word : words) {
    line += (line.empty() ? L"" : L" ") + quoted(word);
  }
  STARTUPINFOW start = {};
  std::intptr_t unused = -1;
  start.cb = sizeof start;
  start.dwFlags = STARTF_USESTDHANDLES;
  start.hStdInput = connect(STD_INPUT_HANDLE, streams.input, &input_);
  start.hStdOutput = connect(STD_OUTPUT_HANDLE, streams.output, &output_);
  start.hStdError = connect(STD_ERROR_HANDLE, streams.errors, &unused);
  PROCESS_INFORMATION made = {};
  if (CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE, CREATE_NEW_PROCESS_GROUP,
                     nullptr, nullptr, &start, &made) == FALSE) {
    std::abort();
  }
  for (HANDLE theirs : {start.hStdInput, start.hStdOutput, start.hStdError, made.hThread}) {
    CloseHandle(theirs);
  }
  process_ = reinterpret_cast<std::intptr_t>(made.hProcess);
}

Program::~Program() {
  kill();
  (void)wait();
  closeOutput();
  CloseHandle(handle(process_));
}

void Program::writeInput(std::string_view bytes) {
  DWORD written = 0;
  while (!bytes.empty() && WriteFile(handle(input_), bytes.data(), static_cast<DWORD>(bytes.size()),
                                     &written, nullptr) != FALSE) {
    bytes.remove_prefix(written);
  }
  CloseHandle(handle(input_));
  input_ = -1;
}

bool Program::readOutput(void* bytes, std::size_t size, std::chrono::milliseconds wait) const {
  const auto deadline = std::chrono::steady_clock::now() + wait;
  DWORD there = 0;
  while (wait.count() >= 0 && there == 0) {
    if (PeekNamedPipe(handle(output_), nullptr, 0, nullptr, &there, nullptr) == FALSE ||
        (there == 0 && std::chrono::steady_clock::now() >= deadline)) {
      return false;
    }
    std::this_thread::yield();
  }
  DWORD count = 0;
  for (std::size_t done = 0; done < size; done += count) {
    if (ReadFile(handle(output_), static_cast<char*>(bytes) + done, static_cast<DWORD>(size - done),
                 &count, nullptr) == FALSE ||
        count == 0) {
      return false;
    }
  }
  return true;
}

void Program::closeOutput() {
  if (output_ != -1) {
    CloseHandle(handle(output_));
    output_ = -1;
  }
}

bool Program::isRunning() {
  lookAtEnd(false);
  return !hasEnded_;
}

/// It takes a console that the program and this test have in common.
bool Program::interrupt() const {
  return GenerateConsoleCtrlEvent(CTRL_BREAK_EVENT, GetProcessId(handle(process_))) != FALSE;
}

void Program::kill() const { TerminateProcess(handle(process_), 256 + 9); }

int Program::wait() {
  lookAtEnd(true);
  return exitCode_;
}

void Program::lookAtEnd(bool waits) {
  DWORD code = 0;
  if (!hasEnded_ && WaitForSingleObject(handle(process_), waits ? INFINITE : 0) == WAIT_OBJECT_0) {
    hasEnded_ = GetExitCodeProcess(handle(process_), &code) != FALSE;
    exitCode_ = static_cast<int>(code);
  }
}

std::vector<std::string> programAt(const std::string& path) { return {path}; }

std::string ownPath() {
  std::array<wchar_t, 1024> path;
  GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
  return std::filesystem::path(path.data()).string();
}

void keepOutputUnchanged() { (void)_setmode(_fileno(stdout), _O_BINARY); }
