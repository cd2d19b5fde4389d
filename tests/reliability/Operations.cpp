#include "reliability/Operations.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "base/zvb_assert.h"
#include "wtfile/ZVWTFileImpl.h"

namespace {

constexpr std::int64_t smallElement = 600;  // bytes
constexpr std::size_t mostValues = 512;     // that an operation reads

Row mixedRow(std::int64_t i) {
  return row({i, std::string(static_cast<std::size_t>(i * 7 % 60), static_cast<char>('a' + i % 26)),
              static_cast<double>(i) / 4, 19000.5 + static_cast<double>(i)});
}

std::vector<Row> mixedRows() {
  std::vector<Row> rows;
  for (std::int64_t i = 0; i < 40; ++i) {
    rows.push_back(i % 9 == 8 ? row({i, {}, {}, {}}) : mixedRow(i));
  }
  return rows;
}

std::vector<Row> textRows() {
  std::vector<Row> rows;
  for (const int size : {100, 140'000, 0, 30'000, 5}) {
    rows.push_back(row({std::string(static_cast<std::size_t>(size), 'x')}));
  }
  return rows;
}

std::vector<Row> manyRows() {
  std::vector<Row> rows;
  for (std::int64_t i = 0; i < 800; ++i) {
    rows.push_back(row({i * 7919 % 100, std::string(80, static_cast<char>('a' + i % 26)), i}));
  }
  return rows;
}

void ignoreFailure(const char* /*text*/, const char* /*file*/, int /*line*/) {}

bool startsWith(const Lines& all, const Lines& first) {
  return first.size() <= all.size() && std::equal(first.begin(), first.end(), all.begin());
}

}  // namespace

Sample::Sample(std::vector<Field> columns, const std::vector<Row>& rows)
    : fields(std::move(columns)) {
  for (const Row& cells : rows) {
    std::string line;
    for (std::size_t i = 0; i < cells.size(); ++i) {
      ZvbDatavar value;
      assignCell(&value, cells[i]);
      (void)value.setType(fields[i].type);
      line += (i == 0 ? "" : "|") + shown(value);
      values.push_back(value);
    }
    lines.push_back(line);
  }
}

// ---- A world

World::World()
    : path(directory.path().c_str()),
      mixed({{"k", zvbTypeInteger}, {"s", zvbTypeString}, {"r", zvbTypeReal}, {"d", zvbTypeDate}},
            mixedRows()),
      texts({{"t", zvbTypeString}}, textRows()),
      many({{"a", zvbTypeInteger}, {"b", zvbTypeString}, {"c", zvbTypeInteger}}, manyRows()),
      kept_{&World::source, &World::longSource, &World::target, &World::longTarget},
      taken_(mostValues) {
  EXPECT_TRUE(directories.split(path, np_dir_listsep));
  manager.reset(zvwtCreateManager("world", path, &error));
  source = keep(mixed, smallElement);
  longSource = keep(texts, 0);
  target = keep(mixed, smallElement);
  longTarget = keep(texts, 0);
  zvbSetAssertHandler(ignoreFailure);  // a cursor whose table cannot be deleted
}

World::~World() { zvbSetAssertHandler(nullptr); }

KeptTable World::keep(const Sample& sample, std::int64_t maxElementSize) {
  const Lines before = directory.names();
  EXPECT_TRUE(create(sample, maxElementSize) && finish(*table, sample)) << error.asCstr();
  KeptTable kept{.name = table->getName(), .sample = &sample, .files = {}};
  table.reset();
  for (const std::string& file : directory.names()) {
    if (std::find(before.begin(), before.end(), file) == before.end()) {
      kept.files[file] = TemporaryDirectory::read(directory.file(file));
    }
  }
  return kept;
}

bool World::isKept(const std::string& file) const {
  return std::any_of(kept_.begin(), kept_.end(),
                     [&](KeptTable World::*kept) { return (this->*kept).files.contains(file); });
}

Lines World::rowsOf(const ZvbString& name) {
  ZvbString reason;
  const TableHandle opened(manager->openTable(name, false, &reason));
  return opened != nullptr ? restOfRows(*opened) : Lines{reason.asCstr()};
}

// ---- For the harness

bool World::attempt(const Operation& operation,
                    const std::function<bool(const std::function<bool()>&)>& disturbed) {
  deleteMade();
  if (operation.prepare != nullptr) {
    operation.prepare(*this);
  }
  error.setNull();
  text.setNull();
  saidByValue = false;
  std::fill(std::begin(numbers), std::end(numbers), 0);
  takenCount_ = 0;
  written_ = 0;
  closed_ = false;
  closeFailed_ = false;
  rowsBefore_ = operation.target != nullptr ? rowsOf((this->*operation.target).name) : Lines();
  openBefore_ = openFiles().size();
  return disturbed([&] { return operation.run(*this); });
}

bool World::attempt(const Operation& operation) {
  return attempt(operation, [](const std::function<bool()>& run) { return run(); });
}

Lines World::results() {
  Lines lines;
  for (std::size_t i = 0; i < takenCount_; ++i) {
    lines.push_back(shown(taken_[i]));
  }
  lines.push_back(text.asCstr());
  for (const std::int64_t number : numbers) {
    lines.push_back(std::to_string(number));
  }
  if (!made.isEmpty()) {
    const Lines rows = exists(made) ? rowsOf(made) : Lines{"deleted"};
    lines.insert(lines.end(), rows.begin(), rows.end());
  }
  return lines;
}

bool World::exists(const ZvbString& name) const {
  return !name.isEmpty() && std::filesystem::exists(directory.file(name.asCstr()));
}

/// What a failure leaves of a table that the operation has made. One that could be closed although
/// a row was refused has the rows before that one until it is released; one that could not be
/// closed is gone; one that could not be deleted is whole and can be deleted, or its end has begun.
void World::expectUnfinished(const Operation& operation, const Disturbance& disturbance) {
  const bool isSorted = sample_ == &many;  // its close may have no memory to begin with
  if (table != nullptr && closed_ && !isSorted) {
    const Lines rows = rowsOf(table->getName());
    EXPECT_TRUE(startsWith(sample_->lines, rows)) << testing::PrintToString(rows);
    EXPECT_LE(rows.size(), static_cast<std::size_t>(written_));
    EXPECT_TRUE(disturbance.lasts || rows.size() == static_cast<std::size_t>(written_));
  }
  if (table != nullptr && closeFailed_ && !isSorted && !disturbance.deleting) {
    EXPECT_FALSE(exists(table->getName()));
  }
  if (operation.deletes && exists(made)) {
    ZvbString reason;
    EXPECT_TRUE(disturbance.deleting || rowsOf(made) == mixed.lines);
    EXPECT_TRUE(manager->deleteTable(made, &reason) || disturbance.deleting) << reason.asCstr();
  }
}

/// The table that rows were added to has all that it had and the first of the new ones, all of them
/// when the operation passed. It is gone when its own close has failed.
void World::expectTarget(const Operation& operation, bool passed, const Disturbance& disturbance) {
  const KeptTable& changed = this->*operation.target;
  if (!passed && !exists(changed.name)) {
    EXPECT_TRUE(closeFailed_ || disturbance.closing);
    return;
  }
  EXPECT_TRUE(!closeFailed_ || disturbance.deleting);
  const Lines rows = rowsOf(changed.name);
  const Lines& sample = changed.sample->lines;
  ASSERT_TRUE(startsWith(rows, rowsBefore_)) << testing::PrintToString(rows);
  const Lines added(rows.begin() + static_cast<std::ptrdiff_t>(rowsBefore_.size()), rows.end());
  EXPECT_TRUE(passed ? added == sample : startsWith(sample, added)) << testing::PrintToString(rows);
  if (closed_ && !disturbance.lasts) {
    EXPECT_EQ(static_cast<std::size_t>(written_), added.size());
  }
}

void World::expectWhole(const Operation& operation, bool passed, const Disturbance& disturbance) {
  if (!passed) {
    expectUnfinished(operation, disturbance);
  }
  table.reset();
  EXPECT_EQ(openBefore_, openFiles().size());
  for (KeptTable World::*kept : kept_) {
    if (kept == operation.target) {
      expectTarget(operation, passed, disturbance);
    } else {
      EXPECT_EQ((this->*kept).sample->lines, rowsOf((this->*kept).name));
    }
  }
}

void World::deleteMade() {
  ZvbString reason;
  EXPECT_TRUE(!exists(made) || manager->deleteTable(made, &reason)) << reason.asCstr();
  made.setNull();
}

void World::putBack(const Operation& operation, const Disturbance& disturbance) {
  const KeptTable* changed = operation.target != nullptr ? &(this->*operation.target) : nullptr;
  deleteMade();
  ZvbString reason;
  EXPECT_TRUE(changed == nullptr || !exists(changed->name) ||
              manager->deleteTable(changed->name, &reason))
      << reason.asCstr();
  // A file that could not be deleted is left; its name then tells nobody's table.
  const bool mayLeave = disturbance.deleting || operation.mayLeave;
  for (const std::string& file : directory.names()) {
    const bool isChanged = changed != nullptr && changed->files.contains(file);
    if (!isKept(file) || isChanged) {
      EXPECT_TRUE(mayLeave) << file << " is left behind";
      std::filesystem::remove(directory.file(file));
    }
  }
  if (changed != nullptr) {
    for (const auto& [file, bytes] : changed->files) {
      (void)directory.write(file, bytes);
    }
  }
}

// ---- For operations

bool World::failed(const ZvbString& reason) {
  error = reason;
  return false;
}

bool World::hadNoMemory() {
  saidByValue = true;
  return false;
}

bool World::create(const Sample& sample, std::int64_t maxElementSize, int sortKeys) {
  table.reset(manager->createTable(sample.columns(), sortKeys, maxElementSize, &error));
  for (int i = 0; table != nullptr && i < sample.columns(); ++i) {
    const Sample::Field& field = sample.fields[static_cast<std::size_t>(i)];
    if (!table->defineColumn(i, field.name, field.type, 0)) {
      return failed(table->getErrorMessage());
    }
  }
  return table != nullptr;
}

/// A row that was refused is written again: when the trouble is over, it and all behind it are
/// taken.
bool World::write(ZvWorkTableFile& file, const Sample& sample) {
  bool allTaken = true;
  sample_ = &sample;
  for (written_ = 0; written_ < sample.rows(); ++written_) {
    const auto place = static_cast<std::size_t>(written_ * sample.columns());
    if (!file.writeRow(&sample.values[place])) {
      if (allTaken) {
        error = file.getErrorMessage();
      }
      allTaken = false;
      if (!file.writeRow(&sample.values[place])) {
        return false;
      }
    }
  }
  return allTaken;
}

bool World::close(ZvWorkTableFile& file) {
  closed_ = file.close();
  closeFailed_ = !closed_;
  return closed_ || failed(file.getErrorMessage());
}

bool World::finish(ZvWorkTableFile& file, const Sample& sample) {
  const bool written = write(file, sample);
  ZvbString reason = std::move(error);
  const bool closed = close(file);
  if (!written) {
    error = std::move(reason);
  }
  return written && closed;
}

bool World::take(const ZvbDatavar& value) {
  ZvbDatavar& place = taken_[takenCount_++];
  place = value;
  return !place.memoryShort() || hadNoMemory();
}

bool World::take(const ZvbString& string) {
  ZvbDatavar& place = taken_[takenCount_++];
  place.assign(string);
  return !place.memoryShort() || hadNoMemory();
}

bool World::read(ZvWorkTableFile& file) {
  bool end = false;
  while (file.readRow(&taken_[takenCount_], &end)) {
    takenCount_ += static_cast<std::size_t>(file.getColumnCount());
  }
  return end || failed(file.getErrorMessage());
}

bool World::readOpened(ZvWorkTableFile* opened) {
  const TableHandle owner(opened);
  return owner != nullptr && read(*owner);
}

// ---- The operations

namespace {

bool makeManager(World& world) {
  const ManagerHandle made(zvwtCreateManager("other", world.path, &world.error));
  return made != nullptr || (world.error.isEmpty() && world.hadNoMemory());
}

bool useKey(World& world) {
  const ZvbString key("a key that is so long that it takes some memory of its own, too");
  const bool taken = world.manager->enqueue(key, &world.error);
  world.manager->dequeue(key);
  return taken;
}

// ---- Writing

bool finishMade(World& world, const Sample& sample) {
  if (!world.finish(*world.table, sample)) {
    return false;
  }
  world.made = world.table->getName();
  return true;
}

template <Sample World::*sample, std::int64_t maxElementSize>
bool create(World& world) {
  return world.create(world.*sample, maxElementSize) && finishMade(world, world.*sample);
}

bool createUnclosed(World& world) {
  const bool written =
      world.create(world.mixed, smallElement) && world.write(*world.table, world.mixed);
  world.table.reset();
  return written;
}

bool createSorted(World& world) {
  if (!world.create(world.many, 0, 2)) {
    return false;
  }
  world.table->setSortColumn(0, 0, true, 0);
  world.table->setSortColumn(1, 1, false, 1);
  return finishMade(world, world.many);
}

/// So little memory that the rows go to work files, and so few at once that they are merged twice.
template <bool secondThread>
void spill(World& world) {
  EXPECT_TRUE(world.manager->sortAndSize0(65536) && world.manager->sortAndSize4(2) &&
              world.manager->sortAndSize6(4096) && world.manager->sortAndSize1(secondThread));
}

template <KeptTable World::*target, KeptTable World::*source>
bool append(World& world) {
  return world.manager->appendTable((world.*target).name, (world.*source).name, &world.error);
}

template <KeptTable World::*target>
bool appendRows(World& world) {
  ZVWTFileImpl file(world.directories, nullptr);
  if (!file.open((world.*target).name, false, nullptr, false)) {
    return world.failed(file.getErrorMessage());
  }
  return world.finish(file, *(world.*target).sample);
}

bool closeCopy(World& world, ZvWorkTableFile* copied) {
  world.table.reset(copied);
  if (copied == nullptr || !world.close(*copied)) {
    return false;
  }
  world.made = copied->getName();
  return true;
}

template <KeptTable World::*source>
bool copy(World& world) {
  return closeCopy(world, world.manager->copyTable(smallElement, world.manager.get(),
                                                   (world.*source).name, &world.error));
}

bool copyFromAnother(World& world) {
  return closeCopy(world,
                   world.manager->copyTable(0, "another", world.longSource.name, &world.error));
}

bool copyInto(World& world) {
  if (!world.create(world.mixed, smallElement)) {
    return false;
  }
  world.made = world.table->getName();
  return world.manager->copyIntoTable(world.table.get(), world.manager.get(), world.source.name,
                                      &world.error) &&
         world.read(*world.table);
}

void makeDoomed(World& world) {
  EXPECT_TRUE((create<&World::mixed, smallElement>(world)));
  world.table.reset();
}

bool deleteMade(World& world) { return world.manager->deleteTable(world.made, &world.error); }

// ---- Reading

template <KeptTable World::*table, bool backwards>
bool readWhole(World& world) {
  return world.readOpened(world.manager->openTable((world.*table).name, backwards, &world.error));
}

template <bool backwards>
bool readNumbered(World& world) {
  const int numbers[] = {3, 0};
  const RowRange range = {.firstRow = 17, .rowCount = 9};
  return world.readOpened(
      world.manager->openTable(world.source.name, 2, numbers, &range, backwards, &world.error));
}

bool readNamed(World& world) {
  const ZvbString names[] = {"s", "none", "k", "s"};
  return world.readOpened(
      world.manager->openTable(world.source.name, 4, names, nullptr, true, &world.error));
}

bool readByUri(World& world) {
  bool failed = false;
  ZvbString uri("zvwt:");
  uri.append(world.source.name, &failed);
  uri.append("?rows=5,30&col=renamed,s&col=k&col=constant,42,2&col=s&col=none&col=d", &failed);
  return failed ? world.hadNoMemory()
                : world.readOpened(world.manager->openTable(uri, false, &world.error));
}

// ---- Describing

bool applySettings(World& world) {
  ZvWorkTableManager& manager = *world.manager;
  return (manager.sortAndSize0(1 << 20) && manager.sortAndSize1(true) &&
          manager.sortAndSize2(false) && manager.sortAndSize3(true) && manager.sortAndSize4(16) &&
          manager.sortAndSize5(0) && manager.sortAndSize6(65536) && manager.sortAndSize7(true)) ||
         world.failed(manager.getLastError());
}

bool measureTable(World& world) {
  ZvwtTableSizes sizes;
  const bool measured =
      zvwtGetTableSizes(world.manager.get(), world.source.name, &sizes, &world.error);
  const std::int64_t found[] = {sizes.elementCount,   sizes.rowCount,  sizes.maxElementSize,
                                sizes.catalogueBytes, sizes.dataBytes, sizes.indexBytes};
  std::copy(std::begin(found), std::end(found), world.numbers);
  return measured;
}

template <KeptTable World::*table>
bool check(World& world) {
  return zvwtCheckTable(world.manager.get(), (world.*table).name, nullptr, nullptr, world.numbers,
                        &world.error);
}

bool splitTable(World& world) {
  RowRange ranges[5];
  int count = 5;
  const bool split = world.manager->partitionTable(world.source.name, &count, ranges, &world.error);
  std::int64_t* next = world.numbers;
  for (const RowRange& range : ranges) {
    *next++ = range.firstRow;
    *next++ = range.rowCount;
  }
  return split;
}

bool describeTable(World& world) {
  const TableHandle table(world.manager->openTable(world.source.name, false, &world.error));
  if (table == nullptr) {
    return false;
  }
  world.text = table->getURI(true);
  return !world.text.isEmpty() || world.hadNoMemory();
}

bool tableAsXml(World& world) {
  const TableHandle table(world.manager->openTable(world.source.name, false, &world.error));
  bool end = false;
  return table != nullptr && ((table->asXml(0, 50, &world.text, &end) && end) ||
                              world.failed(table->getErrorMessage()));
}

// ---- Cursors

template <typename Cursor>
bool readCursor(World& world, Cursor& cursor) {
  int step = cursor.next();
  for (; step == zvbCursorRow; step = cursor.next()) {
    for (int i = 0; i < cursor.columnCount(); ++i) {
      if (!world.take(cursor.value(i))) {
        return false;
      }
    }
  }
  return step == zvbCursorEnd || world.failed(cursor.errorMessage());
}

bool fillCursor(const Sample& sample, ZvWorkTableCursor& cursor) {
  for (const Sample::Field& field : sample.fields) {
    cursor.addColumn(field.name, field.type);
  }
  bool filled = cursor.create();
  const ZvbDatavar* value = sample.values.data();
  for (int row = 0; filled && row < sample.rows(); ++row) {
    filled = cursor.newRow();
    for (int i = 0; i < sample.columns(); ++i) {
      cursor.setValue(i, *value++);
    }
    filled = filled && cursor.appendRow();
  }
  return filled && cursor.endAppend();
}

bool useCursor(World& world) {
  const zvwt::Cursor cursor(zvwtCreateCursor(world.manager.get()));
  if (cursor == nullptr) {
    return world.hadNoMemory();
  }
  const bool filled = fillCursor(world.mixed, *cursor) || world.failed(cursor->errorMessage());
  return filled && readCursor(world, *cursor) &&
         (cursor->rewind() || world.failed(cursor->errorMessage())) && readCursor(world, *cursor);
}

bool attachToCursor(World& world) {
  const zvwt::Cursor cursor(zvwtCreateCursor(world.manager.get()));
  if (cursor == nullptr) {
    return world.hadNoMemory();
  }
  cursor->setRemoveOnClose(false);
  ZvWorkTableFile* opened = world.manager->openTable(world.source.name, true, &world.error);
  return opened != nullptr &&
         (cursor->setWorkTable(opened) || world.failed(cursor->errorMessage())) &&
         readCursor(world, *cursor);
}

/// A copy of a table's statistics, as texts.
bool copyIntoCursor(World& world) {
  const TableHandle table(world.manager->openTable(world.source.name, false, &world.error));
  if (table == nullptr) {
    return false;
  }
  const zvwt::Statistics statistics(table->getStatistics());
  if (statistics == nullptr) {
    return world.failed(table->getErrorMessage());
  }
  const zvwt::StringCursor cursor(zvwtCreateStringCursor(world.manager.get()));
  if (cursor == nullptr) {
    return world.hadNoMemory();
  }
  return (cursor->copyFrom(statistics.get()) || world.failed(cursor->errorMessage())) &&
         readCursor(world, *cursor);
}

bool useFunctions(World& world) {
  const zvwt::ZvwfCursor cursor(zvwtCreateStringZVWFCursor(world.manager.get()));
  if (cursor == nullptr) {
    return world.hadNoMemory();
  }
  ZvwfHandle* handle = cursor->zvwfHandle();
  const ZvwfFunctions& functions = *handle->functions;
  functions.addColumn(handle, "a column with a name that takes memory of its own, as it is long");
  bool done = functions.create(handle) == 0;
  for (int i = 0; done && i < 3; ++i) {
    done = functions.newRow(handle) == 0 && functions.setValue(handle, 0, "text") == 0 &&
           functions.appendRow(handle) == 0;
  }
  done = done && functions.endAppend(handle) == 0;
  int step = 0;
  while (done && (step = functions.next(handle)) == 0) {
    const char* value = nullptr;
    functions.value(handle, 0, &value);
    done = world.take(ZvbString(value));
  }
  return (done && step == 1) || world.saidByValue || world.failed(cursor->errorMessage());
}

/// Files as killed processes leave them, one of each kind.
void leaveOrphans(World& world) {
  for (const char* prefix : {"zvwt_", "zvwte_", "zvwtei_", "zvwork_"}) {
    (void)world.directory.write(std::string(prefix) + "0123456789abcdef", "");
  }
}

/// What cannot be looked at is kept, so it may pass without having removed all; a catalogue that
/// seems damaged is told of without being a failure.
bool clean(World& world) {
  const auto take = [](const ZvwtOrphan* orphan, void* context) {
    const ZvbString problem(orphan->problem);
    if (messageId(problem) != 0) {
      static_cast<World*>(context)->error = problem;
    }
    return true;
  };
  return zvwtCleanDirectories(world.manager.get(), 0, true, take, &world, &world.error) &&
         world.error.isEmpty();
}

constexpr auto source = &World::source;
constexpr auto longSource = &World::longSource;
constexpr auto target = &World::target;
constexpr auto longTarget = &World::longTarget;

constexpr Operation operations[] = {
    {"make a manager", makeManager},
    {"change settings", applySettings},
    {"take and give back a key", useKey},
    {"create", create<&World::mixed, smallElement>},
    {"create with long texts", create<&World::texts, 0>},
    {.name = "create and release without a close", .run = createUnclosed, .mayLeave = true},
    {"create sorted, in memory", createSorted},
    {.name = "create sorted, with work files", .run = createSorted, .prepare = spill<false>},
    {.name = "create sorted, with work files and a second thread",
     .run = createSorted,
     .prepare = spill<true>},
    {"read", readWhole<source, false>},
    {"read backwards", readWhole<source, true>},
    {"read long texts", readWhole<longSource, false>},
    {"read long texts backwards", readWhole<longSource, true>},
    {"read numbered columns of a range", readNumbered<false>},
    {"read numbered columns backwards to a range", readNumbered<true>},
    {"read named columns backwards", readNamed},
    {"read by a URI", readByUri},
    {"append", append<target, source>, target},
    {"append long texts", append<longTarget, longSource>, longTarget},
    {"append row by row", appendRows<target>, target},
    {"append long texts row by row", appendRows<longTarget>, longTarget},
    {"copy", copy<source>},
    {"copy from another manager", copyFromAnother},
    {"copy into a table", copyInto},
    {.name = "delete", .run = deleteMade, .prepare = makeDoomed, .deletes = true, .mayLeave = true},
    {"partition", splitTable},
    {"measure", measureTable},
    {"check", check<source>},
    {"check long texts", check<longSource>},
    {.name = "clean", .run = clean, .prepare = leaveOrphans, .mayLeave = true},
    {"tell the URI", describeTable},
    {"tell as XML", tableAsXml},
    {.name = "use a cursor", .run = useCursor, .mayLeave = true},
    {"read backwards with a cursor", attachToCursor},
    {.name = "copy into a string cursor", .run = copyIntoCursor, .mayLeave = true},
    {.name = "use a cursor from C", .run = useFunctions, .mayLeave = true},
};

}  // namespace

std::span<const Operation> allOperations() { return operations; }
