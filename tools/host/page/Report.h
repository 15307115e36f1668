#pragma once

#include <string>
#include <string_view>

#include "keep/CsvReader.h"

/// A log as a page of one file, which opens from disk and needs no network: the live page's own files with the data
/// inside. `name` is what the log's file is called. Throws FileError where the page is not in this program.
std::string MakeReport(const Log& unsorted, std::string_view name);
