#pragma once

#include <string>

/// What the run shows: one line for each thing that was endured.

/// Adds a line. `what` stands in the first column.
void ReportLine(const std::string& what, const std::string& seen);

/// Says that the run gets on. A run that does not is ended: a lost reply would keep it waiting for ever.
void NoteProgress(const std::string& doing);
