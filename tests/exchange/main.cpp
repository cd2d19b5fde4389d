/// Tables that go from one machine to another: writes some, prints all that is read from them,
/// compares those of two machines, and appends. What it prints is the same for the same rows,
/// whoever wrote them and whoever reads them.
///
///   zvwt-exchange write DIRECTORY      makes the tables there, and a list of their names
///   zvwt-exchange read DIRECTORY       prints them
///   zvwt-exchange compare OWN OTHER    whether the files are the same but for their names and the
///                                      byte order of OTHER; OWN is of this machine's
///   zvwt-exchange append DIRECTORY     appends each table to itself and prints "appended", or
///                                      "refused" when they are of the other byte order

#include <cstdio>
#include <exception>
#include <string_view>

#include "exchange/Printing.h"
#include "exchange/SampleTables.h"
#include "support/OtherByteOrder.h"

namespace {

void readTables(const std::string& directory) {
  const zvwt::Manager manager = openDirectory(directory);
  for (const std::string& name : tableNames(directory)) {
    printTable(*manager, name);
  }
}

std::uint16_t markOf(const std::string& directory, const std::string& name) {
  return Bytes(directory + '/' + name).get<std::uint16_t>(0);
}

/// The files of a table one behind the other, the catalogue last and without their names.
std::string filesOf(const std::string& directory, const std::string& name) {
  std::string catalogue = TemporaryDirectory::read(directory + '/' + name);
  std::string files;
  for (std::size_t at = catalogue.find("zvwte"); at != std::string::npos;
       at = catalogue.find("zvwte", at)) {
    const std::string file = catalogue.c_str() + at;
    files += TemporaryDirectory::read(directory + '/' + file);
    catalogue.replace(at, file.size(), file.size(), '?');
  }
  return files + catalogue;
}

/// The files of a table of this machine as one of the other byte order would have written them.
std::string reversedFilesOf(const std::string& directory, const std::string& name) {
  const TemporaryDirectory copy;
  std::filesystem::copy(directory, copy.path());
  OtherByteOrder(copy, name).reverse();
  return filesOf(copy.path(), name);
}

void compareTables(const std::string& own, const std::string& other) {
  const std::vector<std::string> ownNames = tableNames(own);
  const std::vector<std::string> otherNames = tableNames(other);
  for (std::size_t i = 0; i < ownNames.size(); ++i) {
    const bool isReversed = markOf(own, ownNames[i]) != markOf(other, otherNames[i]);
    const std::string expected =
        isReversed ? reversedFilesOf(own, ownNames[i]) : filesOf(own, ownNames[i]);
    if (filesOf(other, otherNames[i]) != expected) {
      fail("compare", ("table " + std::to_string(i) + " is not the same").c_str());
    }
  }
}

void appendToTables(const std::string& directory) {
  const zvwt::Manager manager = openDirectory(directory);
  bool isForeign = false;
  for (const std::string& name : tableNames(directory)) {
    ZvbString error;
    isForeign = markOf(directory, name) != 1;
    if (manager->appendTable(name.c_str(), name.c_str(), &error) == isForeign) {
      fail("append", isForeign ? ZvbString("rows of two byte orders in one table") : error);
    }
  }
  (void)std::puts(isForeign ? "refused" : "appended");
}

bool run(int argumentCount, char** arguments) {
  const std::string_view verb = argumentCount < 3 ? "" : arguments[1];
  if (verb == "write" && argumentCount == 3) {
    writeTables(arguments[2]);
  } else if (verb == "read" && argumentCount == 3) {
    readTables(arguments[2]);
  } else if (verb == "compare" && argumentCount == 4) {
    compareTables(arguments[2], arguments[3]);
  } else if (verb == "append" && argumentCount == 3) {
    appendToTables(arguments[2]);
  } else {
    return false;
  }
  return true;
}

}  // namespace

int main(int argumentCount, char** arguments) {
  try {
    return run(argumentCount, arguments) ? 0 : 2;
  } catch (const std::exception& failure) {
    (void)std::fprintf(stderr, "zvwt-exchange: %s\n", failure.what());
    return 1;
  }
}
