/// Holds a table's files against docs/file-format.md.
///
/// The files are read once each, in order. Memory is bounded by the size of the catalogue, whatever
/// the numbers in it say: each of them is looked at beside the bytes that the file has before it is
/// used. What is wrong in one place costs only what cannot be understood without it:
///
///   CatalogueCheck  the catalogue, and every element as it comes to it
///   ElementCheck    an element's two files, row by row
///   SeenNames       the names of the elements' files: none may come twice
///   CheckedFile     one file, its size and the position in it
///   CheckReport     the findings
///
/// Thread rule: may be called from any thread.
#pragma once

#include "fio/TempDirectories.h"
#include "wtcheck/CheckReport.h"

/// Checks the table of that name. See zvwtCheckTable.
void checkTable(const TempDirectories& directories, const char* name, CheckReport* report) noexcept;
