/// Files of the file layer, as its tests open them.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "fio/np_fio.h"

struct CloseFile {
  void operator()(np_fio_handle file) const { np_fio_close(file); }
};
using File = std::unique_ptr<np_fio_file, CloseFile>;

inline int openStatus(const std::string& path, int mode) {
  np_fio_handle file = nullptr;
  const int status = np_fio_open(path.c_str(), mode, &file);
  EXPECT_EQ(file != nullptr, status == npFioSuccess);
  np_fio_close(file);
  return status;
}

inline File opened(const std::string& path, int mode) {
  np_fio_handle file = nullptr;
  EXPECT_EQ(np_fio_open(path.c_str(), mode, &file), npFioSuccess);
  return File(file);
}

inline std::string readText(np_fio_handle file, std::size_t size) {
  std::string text(size, '\0');
  const int count = np_fio_getb(file, text.data(), static_cast<int>(size));
  text.resize(static_cast<std::size_t>(count));
  return text;
}

inline int putText(np_fio_handle file, const std::string& text) {
  return np_fio_putb(file, text.data(), static_cast<int>(text.size()));
}
