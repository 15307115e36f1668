#pragma once

#include <string>

#include "model/Snapshot.h"

/// What a Prometheus server scrapes. Names and units follow its conventions: base units, so that shares are ratios from
/// 0 to 1 and not per cent. A channel that does not answer has no sample of its value: the last one would look like
/// news.

enum class MetricsFormat {
    OpenMetrics,  // application/openmetrics-text; version=1.0.0
    Text          // text/plain; version=0.0.4, for older tools and for people
};

const char* MetricsContentType(MetricsFormat format);

/// The metrics of the newest snapshot; of the program alone when there is none yet.
std::string Metrics(const Snapshot* snapshot, MetricsFormat format);
