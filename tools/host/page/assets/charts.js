"use strict";
// All charts: one stretch of time for all of them, and where its values come from.
(function () {
    const kHour = 3600000;
    const kRanges = [["1 h", 1], ["6 h", 6], ["24 h", 24], ["72 h", 72]];
    const kNarrowest = 10000; // ms
    const kFirstMinutes = 120000;
    const kMostAppended = 600;
    const kRedrawMs = 900;

    class Charts {
        constructor(source) {
            this.source = source;
            this.charts = [];
            this.events = [];
            this.history = null;
            this.range = kHour;
            this.follows = true;
            this.extent = null; // of a log: [first, last]
            this.begin = 0; // no row is known to be older
            this.from = 0;
            this.to = 1;
            this.appended = 0;
            this.drawnAt = 0;
            this.buildButtons();
            oko.onTheme(() => this.charts.forEach((chart) => chart.recolor()));
        }

        build(channels, nowMs, extent) {
            this.extent = extent || null;
            const kinds = [...new Set(channels.map((channel) => channel.kind))];
            this.charts = kinds.map((kind) => new oko.Chart(kind, channels.filter((channel) => channel.kind === kind), this));
            document.getElementById("chart-list").replaceChildren(...this.charts.map((chart) => chart.element));
            document.getElementById("charts").hidden = false;
            this.nowMs = nowMs;
            if (extent) this.range = null; // all of it
            this.showRange();
        }

        buildButtons() {
            const button = (text, label, action) => {
                const made = oko.element("button", {type: "button", title: label, "aria-label": label}, text);
                made.addEventListener("click", action);
                return made;
            };
            const ranges = this.source.isLive ? kRanges : [["All", null], ...kRanges];
            this.rangeButtons = ranges.map(([text, hours]) => {
                const range = hours === null ? null : hours * kHour;
                const label = hours === null ? "All of the log" : "The last " + (hours === 1 ? "hour" : hours + " hours");
                const made = button(text, label, () => {
                    this.range = range;
                    this.showRange();
                });
                return {made, range};
            });
            document.getElementById("ranges").replaceChildren(...this.rangeButtons.map(({made}) => made));
            document.getElementById("moves").replaceChildren(
                button("\u25c0", "Earlier", () => this.pan(-0.5)), button("\u25b6", "Later", () => this.pan(0.5)),
                button("+", "Zoom in", () => this.zoom(0.5)), button("\u2212", "Zoom out", () => this.zoom(2)));
        }

        latest() {
            return this.extent ? this.extent[1] : this.nowMs;
        }

        earliest() {
            return this.extent ? this.extent[0] : this.nowMs - 72 * kHour;
        }

        // The chosen range up to the latest values, which a live page follows.
        showRange() {
            this.follows = true;
            const to = this.latest();
            const from = this.range === null ? this.earliest() : this.beginOfRange(to);
            this.move(from, Math.max(to, from + kNarrowest));
        }

        // Of a watch that has just begun, the minutes that it has.
        beginOfRange(to) {
            return Math.max(to - this.range, Math.min(this.begin, to - kFirstMinutes));
        }

        showAll() {
            this.follows = false;
            this.move(this.earliest(), Math.max(this.latest(), this.earliest() + kNarrowest));
        }

        show(from, to) {
            this.follows = false;
            const middle = (from + to) / 2;
            const half = Math.max(kNarrowest, Math.min(to - from, 2 * (this.latest() - this.earliest()) + kNarrowest)) / 2;
            this.move(middle - half, middle + half);
        }

        pan(share) {
            const by = (this.to - this.from) * share;
            this.show(this.from + by, this.to + by);
        }

        // Keeps the latest values in sight where they are.
        zoom(factor) {
            const length = (this.to - this.from) * factor;
            const anchor = this.follows ? this.to : (this.from + this.to) / 2 + length / 2;
            this.show(anchor - length, anchor);
        }

        showTime(ms) {
            const half = (this.to - this.from) / 2;
            this.show(ms - half, ms + half);
            document.getElementById("charts").scrollIntoView({block: "nearest"});
        }

        move(from, to) {
            this.from = from;
            this.to = to;
            this.showWindow();
            this.charts.forEach((chart) => chart.fitValues());
            this.fetchSoon();
        }

        showWindow() {
            for (const {made, range} of this.rangeButtons) {
                made.setAttribute("aria-pressed", String(this.follows && this.range === range));
            }
            oko.setText(document.getElementById("window"), oko.span(this.from, this.to) +
                (this.source.isLive && this.follows ? ", following" : ""));
        }

        // Moves come in bursts; values are asked for when they pause.
        fetchSoon() {
            clearTimeout(this.timer);
            this.timer = setTimeout(() => this.fetch(), this.history ? 120 : 0);
        }

        async fetch() {
            const length = this.to - this.from;
            const width = document.getElementById("chart-list").clientWidth || 800;
            const number = this.fetchNumber = (this.fetchNumber || 0) + 1;
            this.isFetching = true;
            try {
                // A quarter of the window more on both sides, so that a small move shows no empty ground; in all about a
                // least and a greatest value for each pixel.
                const since = this.from - length / 4;
                const history = await this.source.history(since, this.to + length / 4, Math.max(400, width) * 2);
                if (number === this.fetchNumber) this.take(history, since);
            } catch (error) {
                // The banner tells; the next snapshot asks again.
                this.history = this.history || null;
            }
            if (number === this.fetchNumber) this.isFetching = false;
        }

        take(history, since) {
            this.history = history;
            this.appended = 0;
            if (this.source.isLive && history.time[0] > since + kFirstMinutes) this.begin = history.time[0];
            if (this.latestSnapshot) oko.appendSnapshot(history, this.latestSnapshot);
            this.charts.forEach((chart) => chart.take(history));
            if (this.source.isLive && this.follows && this.from < this.beginOfRange(this.to)) {
                this.from = this.beginOfRange(this.to);
                this.showWindow();
            }
            this.charts.forEach((chart) => chart.fitValues());
        }

        addSnapshot(snapshot) {
            this.nowMs = snapshot.timeMs;
            this.latestSnapshot = snapshot;
            if (!this.history) return this.isFetching || this.fetchSoon();
            // A look at the past needs no new rows, and stays as it is.
            if (oko.appendSnapshot(this.history, snapshot)) ++this.appended;
            if (!this.follows || Date.now() - this.drawnAt < kRedrawMs) return;
            this.drawnAt = Date.now();
            this.to = snapshot.timeMs;
            this.from = this.beginOfRange(this.to);
            this.showWindow();
            this.charts.forEach((chart) => {
                chart.take(this.history);
                chart.fitValues();
            });
            if (this.appended > kMostAppended) this.fetchSoon();
        }

        // Another run: what is known of the one before is not of this one.
        refetch() {
            this.begin = 0;
            if (this.charts.length > 0) this.fetchSoon();
        }

        clearEvents() {
            this.events = [];
        }

        addEvent(event) {
            this.events.push(event);
            if (!oko.isMarked(event)) return;
            clearTimeout(this.eventTimer);
            this.eventTimer = setTimeout(() => this.charts.forEach((chart) => chart.redraw()), 50);
        }

        // The pointer is over one chart: all charts show the row that is nearest, which may be one without values.
        point(event, at) {
            const x = event.clientX - at.plot.getBoundingClientRect().left;
            const row = oko.nearestRow(at.time, at.graph.toDataXCoord(x));
            if (row < 0) return;
            for (const chart of this.charts) {
                chart.tell(row);
                if (chart !== at && chart.graph) chart.graph.setSelection(row);
            }
            const near = oko.eventNear(oko.eventsOf(this.events, at.keys), at.graph, x);
            const text = oko.dateTime(at.time[row]) + (near ? " \u00b7 " + near.kind + ": " + near.text : "");
            this.charts.forEach((chart) => oko.setText(chart.caption, chart === at ? text : ""));
        }

        unpoint() {
            for (const chart of this.charts) {
                chart.tell(null);
                oko.setText(chart.caption, "");
                if (chart.graph) chart.graph.clearSelection();
            }
        }
    }

    oko.Charts = Charts;
})();
