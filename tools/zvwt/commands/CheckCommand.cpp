#include <algorithm>
#include <charconv>
#include <iterator>

#include "commands/Commands.h"
#include "formats/JsonWriter.h"
#include "process/Diagnostics.h"
#include "process/OutputBuffer.h"
#include "tables/TableFailure.h"
#include "text/Counted.h"

namespace zvwttool {
namespace {

/// Prints findings as they come. What a taker calls allocates nothing and so does not throw.
class FindingPrinter {
 public:
  FindingPrinter(bool asJson, OutputBuffer* output)
      : asJson_(asJson), output_(output), json_(output) {
    if (asJson_) {
      json_.beginArray();
    }
  }

  /// The findings to come are this table's, which outlives them.
  void begin(const std::string& table) { table_ = &table; }

  /// A ZvwtFindingTaker whose context is a printer.
  static bool take(const ZvwtFinding* finding, void* context) {
    auto* printer = static_cast<FindingPrinter*>(context);
    printer->print(*finding);
    return !printer->output_->failed();
  }

  void finish() {
    if (asJson_) {
      json_.endArray();
    }
  }

 private:
  void print(const ZvwtFinding& finding) {
    if (asJson_) {
      printObject(finding);
    } else {
      printLine(finding);
    }
  }

  void printLine(const ZvwtFinding& finding) {
    char digits[24];
    output_->append(*table_);
    output_->append(": ");
    output_->append(finding.file);
    output_->append(", byte ");
    output_->append({digits, std::to_chars(digits, std::end(digits), finding.offset).ptr});
    output_->append(": ");
    output_->append(finding.rule);
    output_->append('\n');
  }

  void printObject(const ZvwtFinding& finding) {
    json_.beginObject();
    json_.member("table", *table_);
    json_.member("file", finding.file);
    json_.member("offset", finding.offset);
    json_.member("rule", finding.rule);
    json_.endObject();
  }

  bool asJson_;
  OutputBuffer* output_;
  JsonWriter json_;
  const std::string* table_ = nullptr;
};

void printSound(ZvWorkTableManager& manager, const std::string& table, OutputBuffer* output) {
  ZvwtTableSizes sizes{};
  ZvbString error;
  if (!zvwtGetTableSizes(&manager, table.c_str(), &sizes, &error)) {
    throw openingFailure(manager, table, error, "");
  }
  output->append(table + ": sound, " + counted(sizes.rowCount, "row") + '\n');
}

ExitCode checkOne(ZvWorkTableManager& manager, const std::string& table, bool asJson,
                  FindingPrinter* printer, OutputBuffer* output) {
  printer->begin(table);
  std::int64_t findings = 0;
  ZvbString error;
  if (!zvwtCheckTable(&manager, table.c_str(), FindingPrinter::take, printer, &findings, &error)) {
    throw openingFailure(manager, table, error, "");
  }
  if (findings > 0) {
    return ExitCode::findings;
  }
  if (!asJson) {
    printSound(manager, table, output);
  }
  return ExitCode::success;
}

}  // namespace

/// A table that cannot be looked at does not keep the others from it.
ExitCode runCheck(ZvWorkTableManager& manager, const CheckOptions& options) {
  OutputBuffer output;
  FindingPrinter printer(options.asJson, &output);
  ExitCode result = ExitCode::success;
  for (const std::string& table : options.tables) {
    try {
      result = std::max(result, checkOne(manager, table, options.asJson, &printer, &output));
    } catch (const Failure& failure) {
      say(failure.what());
      result = std::max(result, failure.code());
    }
  }
  printer.finish();
  output.finish();
  return result;
}

}  // namespace zvwttool
