#include <algorithm>
#include <charconv>
#include <cstdio>
#include <iterator>

#include "Commands.h"
#include "Diagnostics.h"
#include "DisplayText.h"
#include "OutputBuffer.h"

namespace zvwttool {
namespace {

/// Prints findings as they come. What a taker calls allocates nothing and so does not throw.
class FindingPrinter {
 public:
  FindingPrinter(bool asJson, OutputBuffer* output) : asJson_(asJson), output_(output) {}

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
      output_->append(isFirst_ ? "[]\n" : "\n]\n");
    }
  }

 private:
  void print(const ZvwtFinding& finding) {
    if (asJson_) {
      printObject(finding);
    } else {
      printLine(finding);
    }
    isFirst_ = false;
  }

  void printLine(const ZvwtFinding& finding) {
    output_->append(*table_);
    output_->append(": ");
    output_->append(finding.file);
    output_->append(", byte ");
    printNumber(finding.offset);
    output_->append(": ");
    output_->append(finding.rule);
    output_->append('\n');
  }

  void printObject(const ZvwtFinding& finding) {
    output_->append(isFirst_ ? "[\n  {\"table\": " : ",\n  {\"table\": ");
    printText(*table_);
    output_->append(", \"file\": ");
    printText(finding.file);
    output_->append(", \"offset\": ");
    printNumber(finding.offset);
    output_->append(", \"rule\": ");
    printText(finding.rule);
    output_->append('}');
  }

  void printNumber(std::int64_t number) {
    char digits[24];
    output_->append({digits, std::to_chars(digits, std::end(digits), number).ptr});
  }

  /// A name may be of any bytes, but JSON is UTF-8.
  void printText(std::string_view text) {
    output_->append('"');
    while (!text.empty()) {
      const std::size_t size = characterSize(text);
      if (size == 0) {
        output_->append("\\ufffd");
      } else {
        printCharacter(text.substr(0, size));
      }
      text.remove_prefix(std::max<std::size_t>(size, 1));
    }
    output_->append('"');
  }

  void printCharacter(std::string_view character) {
    const auto lead = static_cast<unsigned char>(character[0]);
    if (lead < 0x20) {
      char escape[8];
      (void)std::snprintf(escape, sizeof escape, "\\u%04x", unsigned{lead});
      output_->append(escape);
      return;
    }
    if (lead == '"' || lead == '\\') {
      output_->append('\\');
    }
    output_->append(character);
  }

  bool asJson_;
  OutputBuffer* output_;
  const std::string* table_ = nullptr;
  bool isFirst_ = true;
};

ExitCode printSound(ZvWorkTableManager& manager, const std::string& table, OutputBuffer* output) {
  ZvwtTableSizes sizes{};
  ZvbString error;
  if (!zvwtGetTableSizes(&manager, table.c_str(), &sizes, &error)) {
    return fail(table + ": " + error.asCstr());
  }
  output->append(table + ": sound, " + std::to_string(sizes.rowCount) +
                 (sizes.rowCount == 1 ? " row\n" : " rows\n"));
  return ExitCode::success;
}

ExitCode checkOne(ZvWorkTableManager& manager, const std::string& table, bool asJson,
                  FindingPrinter* printer, OutputBuffer* output) {
  printer->begin(table);
  std::int64_t findings = 0;
  ZvbString error;
  if (!zvwtCheckTable(&manager, table.c_str(), FindingPrinter::take, printer, &findings, &error)) {
    return fail(table + ": " + error.asCstr());
  }
  if (findings > 0) {
    return ExitCode::failure;
  }
  return asJson ? ExitCode::success : printSound(manager, table, output);
}

}  // namespace

ExitCode runCheck(ZvWorkTableManager& manager, const CheckOptions& options) {
  OutputBuffer output;
  FindingPrinter printer(options.asJson, &output);
  ExitCode result = ExitCode::success;
  for (const std::string& table : options.tables) {
    const ExitCode checked = checkOne(manager, table, options.asJson, &printer, &output);
    result = checked == ExitCode::success ? result : checked;
  }
  printer.finish();
  const ExitCode written = output.finish();
  return result == ExitCode::success ? written : result;
}

}  // namespace zvwttool
