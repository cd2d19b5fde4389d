/// An environment variable that has another value, or none for null, as long as this lives. Only
/// for tests that run no threads: the environment has no lock.
#pragma once

#include <cstdlib>
#include <optional>
#include <string>
#include <utility>

#include "support/ThisProcess.h"

class EnvironmentVariable {
 public:
  EnvironmentVariable(std::string name, const char* value) : name_(std::move(name)) {
    const char* const former = std::getenv(name_.c_str());  // NOLINT(concurrency-mt-unsafe)
    if (former != nullptr) {
      former_ = former;
    }
    set(value);
  }
  EnvironmentVariable(const EnvironmentVariable&) = delete;
  EnvironmentVariable& operator=(const EnvironmentVariable&) = delete;
  ~EnvironmentVariable() { set(former_ ? former_->c_str() : nullptr); }

  void set(const char* value) const { setVariable(name_, value); }

 private:
  std::string name_;
  std::optional<std::string> former_;
};
