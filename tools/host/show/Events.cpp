#include "show/Events.h"

#include <string>

#include "model/Event.h"
#include "text/Time.h"

std::string EventLine(const Event& event) {
    const std::string subject = event.channel.empty() ? "" : " " + event.channel;
    const std::string text = event.text.empty() ? "" : ": " + event.text;
    return FormatLocal(event.when.utcMs) + "  " + EventKindName(event.kind) + subject + text;
}
