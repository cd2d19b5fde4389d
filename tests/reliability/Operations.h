/// Everything that can be done with tables, to be done while something fails, and a place to do it
/// in that tells afterwards whether all is as it has to be.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <map>
#include <span>
#include <string>
#include <vector>

#include "fio/TempDirectories.h"
#include "support/TableFixture.h"
#include "support/ThisProcess.h"

using Lines = std::vector<std::string>;

/// Columns and rows that are made beforehand: what runs while memory is short must not need any of
/// its own.
struct Sample {
  struct Field {
    ZvbString name;
    zvbType type;
  };

  Sample(std::vector<Field> columns, const std::vector<Row>& rows);
  [[nodiscard]] int columns() const { return static_cast<int>(fields.size()); }
  [[nodiscard]] int rows() const { return static_cast<int>(lines.size()); }

  std::vector<Field> fields;
  std::vector<ZvbDatavar> values;
  Lines lines;  // the rows as they are read
};

/// A table that is there before anything is done.
struct KeptTable {
  ZvbString name;
  const Sample* sample = nullptr;
  std::map<std::string, std::string> files;  // with their bytes
};

class World;

struct Operation {
  const char* name;
  /// Does it; false with the reason in World::error. Allocates nothing itself.
  bool (*run)(World& world);
  KeptTable World::*target = nullptr;       // the table that it adds rows to
  void (*prepare)(World& world) = nullptr;  // what is there before
  bool deletes = false;                     // a table that `prepare` has made
  /// It deletes a table, for which files have to be opened first, or releases one without a close:
  /// a failure of that has no result, or no way back.
  bool mayLeave = false;
};

std::span<const Operation> allOperations();

/// What an operation was disturbed by, as far as it matters for what it may leave behind.
struct Disturbance {
  bool lasts = false;     // to the end of the operation
  bool deleting = false;  // deleting a file was, or finding it to do so
  bool closing = false;   // writing what a close writes was
};

class World {
 public:
  World();
  World(const World&) = delete;
  World& operator=(const World&) = delete;
  ~World();

  // ---- For the harness

  /// Runs an operation; `disturbed` calls what it is given while something fails.
  bool attempt(const Operation& operation,
               const std::function<bool(const std::function<bool()>&)>& disturbed);
  bool attempt(const Operation& operation);
  /// What a run that passed has read, said and made.
  Lines results();
  /// Checks what is there after a run, and puts back what was there before the next one.
  void expectWhole(const Operation& operation, bool passed, const Disturbance& disturbance);
  void putBack(const Operation& operation, const Disturbance& disturbance);
  /// False when the table that it adds rows to is gone.
  [[nodiscard]] bool canRepeat(const Operation& operation) const {
    return operation.target == nullptr || exists((this->*operation.target).name);
  }

  // ---- For operations

  bool failed(const ZvbString& reason);
  /// An object tells by itself that it had no memory for its value.
  bool hadNoMemory();
  bool create(const Sample& sample, std::int64_t maxElementSize, int sortKeys = 0);
  bool write(ZvWorkTableFile& table, const Sample& sample);
  bool close(ZvWorkTableFile& table);
  /// Writes and closes; after a row that was refused, too.
  bool finish(ZvWorkTableFile& table, const Sample& sample);
  bool read(ZvWorkTableFile& table);
  /// Takes ownership; null is a failure that `error` tells of.
  bool readOpened(ZvWorkTableFile* table);
  bool take(const ZvbDatavar& value);
  bool take(const ZvbString& text);

  TemporaryDirectory directory;
  ZvbString path;
  TempDirectories directories;
  ManagerHandle manager;
  Sample mixed;  // of several elements
  Sample texts;  // some longer than the file layer's buffer
  Sample many;   // more than a small sort has memory for
  KeptTable source;
  KeptTable longSource;
  KeptTable target;
  KeptTable longTarget;

  ZvbString error;
  bool saidByValue = false;  // the failure has no text
  TableHandle table;         // made by the operation
  ZvbString made;            // the name of a table that it made and closed
  ZvbString text;
  std::int64_t numbers[16] = {};

 private:
  KeptTable keep(const Sample& sample, std::int64_t maxElementSize);
  Lines rowsOf(const ZvbString& name);
  [[nodiscard]] bool exists(const ZvbString& name) const;
  void deleteMade();
  void expectUnfinished(const Operation& operation, const Disturbance& disturbance);
  void expectTarget(const Operation& operation, bool passed, const Disturbance& disturbance);
  [[nodiscard]] bool isKept(const std::string& file) const;

  std::vector<KeptTable World::*> kept_;
  std::vector<ZvbDatavar> taken_;  // values that were read
  std::size_t takenCount_ = 0;
  const Sample* sample_ = nullptr;  // that was written
  int written_ = 0;                 // rows of it that were accepted
  bool closed_ = false;
  bool closeFailed_ = false;
  Lines rowsBefore_;  // of the target
  std::size_t openBefore_ = 0;
};
