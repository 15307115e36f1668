"use strict";
// What a report says in numbers.
(function () {
    function percent(share) {
        if (share === null) return "\u2013";
        // All but one row of many is not all.
        const shown = Math.floor(share * 1000) / 10;
        return shown.toFixed(1) + "\u00a0%";
    }

    function row(channel, index) {
        const unit = (number) => (number === null ? "\u2013" : oko.value(number) + "\u00a0" + channel.unit);
        const cell = (label, text, className) =>
            oko.element("td", {"data-label": label, className: className || "number"}, text);
        return oko.element("tr", {"data-key": channel.key},
            oko.element("th", {scope: "row"}, oko.swatch(index), channel.name),
            cell("Quantity", channel.kind, "quantity"),
            cell("Min", unit(channel.least)),
            cell("Mean", unit(channel.mean)),
            cell("Max", unit(channel.greatest)),
            cell("Time in band", percent(channel.inBand)),
            cell("Reads", String(channel.reads)),
            cell("Failed", String(channel.failedReads), channel.failedReads > 0 ? "number problem" : "number"));
    }

    oko.showSummary = function (head) {
        const section = document.getElementById("summary");
        const counts = {};
        section.querySelector("tbody").replaceChildren(...head.channels.map(function (channel) {
            const index = counts[channel.kind] = (counts[channel.kind] ?? -1) + 1;
            return row(channel, index);
        }));
        const about = head.rows === 0
            ? "The log has no rows yet."
            : oko.span(head.firstMs, head.lastMs) + ": " + head.rows + " rows of " + head.file + ", one every " +
              oko.plain(head.interval) + " s.";
        const torn = head.torn === 0 ? "" : " " + head.torn + (head.torn === 1 ? " row was" : " rows were") +
            " left unfinished by a killed program, and left out.";
        oko.setText(document.getElementById("summary-about"), about + torn);
        section.hidden = false;
    };
})();
