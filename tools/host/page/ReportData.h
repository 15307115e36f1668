#pragma once

#include <span>
#include <string>
#include <string_view>

#include "keep/CsvReader.h"

/// What a report's page is told: a head as JSON, and all values in few bytes.

/// Appends values as whole numbers of a power of ten, by `decimals`. Each is told as how far it lies from the one
/// before, seven bits a byte, low ones first: 0 is no value, 1 and a count says that the last one comes again so often,
/// and from 2 on it is a difference, those below zero between the others (2: 0, 3: -1, 4: 1). What is beyond the
/// decimals is lost.
void AppendColumn(std::string& bytes, std::span<const double> values, int decimals);

/// So many decimals tell all of the values exactly; 6 where none do: a device tells less.
int DecimalsOf(std::span<const double> first, std::span<const double> second);

/// The rows of a log in the order of their times: a clock that was set back is no reason to draw lines backwards.
Log SortedByTime(Log log);

/// Of a log whose rows are in order.
std::string ReportHead(const Log& log, std::string_view name, std::span<const int> decimals);

/// Of a log whose rows are in order: the times, and of each channel its values and its targets. As base64.
std::string ReportValues(const Log& log, std::span<const int> decimals);

std::string Base64(std::string_view bytes);
