#include "show/DeviceTable.h"

#include <cstddef>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "model/ChannelInfo.h"
#include "model/Reading.h"
#include "model/Snapshot.h"
#include "show/Table.h"
#include "text/Time.h"

namespace {

std::string Value(const std::optional<double>& value) { return value ? FormatValue(*value) : "-"; }

TableRow RowOf(const ChannelInfo& channel, const Reading& reading) {
    return {std::to_string(channel.number),
            channel.name,
            KindName(channel.kind),
            Value(reading.current),
            Value(reading.target),
            UnitOf(channel.kind),
            std::string(StateName(channel.kind, reading.state)) + (reading.airMode ? ", air mode" : "")};
}

}  // namespace

std::string DeviceTitle(const DeviceInfo& device) {
    if (device.simulated) {
        return device.name + " (simulated)";
    }
    return device.port ? device.name + " on COM" + std::to_string(*device.port) : device.name;
}

std::vector<std::string> DeviceTable(const Snapshot& snapshot) {
    std::vector<std::string> lines{DeviceTitle(snapshot.device) + "  " + FormatLocal(snapshot.when.utcMs) + "  row " +
                                   std::to_string(snapshot.row)};
    if (!snapshot.live) {
        lines.push_back("NO DATA: " + snapshot.reason);
    }
    std::vector<TableRow> rows;
    rows.reserve(snapshot.channels.size());
    for (std::size_t i = 0; i < snapshot.channels.size(); ++i) {
        rows.push_back(RowOf(snapshot.channels[i], snapshot.statuses[i].reading));
    }
    for (std::string& line : FormatTable(rows)) {
        lines.push_back(std::move(line));
    }
    for (const AlarmStatus& alarm : snapshot.alarms) {
        if (alarm.phase == AlarmPhase::On) {
            lines.push_back("ALARM: " + alarm.reason);
        } else if (alarm.phase == AlarmPhase::Pending) {
            lines.push_back("(not yet an alarm: " + alarm.reason + ")");
        }
    }
    return lines;
}
