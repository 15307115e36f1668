"use strict";
// The page: what comes from the source goes to its parts.
(function () {
    const kIntervalsUntilStale = 3;
    const kLeastUntilStaleMs = 2000; // a browser that is busy for a moment is not a silent device

    class LivePage {
        constructor() {
            this.source = new oko.LiveSource();
            this.table = new oko.ChannelTable(this.source);
            this.charts = new oko.Charts(this.source);
            this.events = new oko.EventTable((ms) => this.charts.showTime(ms));
            this.snapshot = null;
            this.arrived = 0;
            this.lost = "";
            setInterval(() => this.tick(), 500);
            this.source.start({
                snapshot: (snapshot) => this.take(snapshot),
                event: (event, isOld) => this.takeEvent(event, isOld),
                connection: (isThere, problem) => {
                    this.lost = isThere ? "" : problem;
                    this.show();
                },
                restarted: () => {
                    this.events.clear();
                    this.charts.clearEvents();
                    this.charts.refetch();
                },
            });
        }

        take(snapshot) {
            const keys = (one) => one.channels.map((channel) => channel.key).join("\n") + one.device;
            if (this.snapshot && keys(this.snapshot) !== keys(snapshot)) return location.reload();
            const isFirst = !this.snapshot;
            this.snapshot = snapshot;
            this.arrived = performance.now();
            if (isFirst) {
                oko.showHeading(snapshot);
                this.table.build(snapshot);
                this.charts.build(snapshot.channels, snapshot.timeMs);
            }
            this.charts.addSnapshot(snapshot);
            this.show();
        }

        takeEvent(event, isOld) {
            this.events.add(event, isOld);
            this.charts.addEvent(event);
        }

        // Why what is shown is not now; empty when it is.
        problem() {
            if (this.lost) return this.lost;
            if (!this.snapshot) return "";
            if (!this.snapshot.live) return this.snapshot.reason || "no values are coming";
            const silentMs = performance.now() - this.arrived;
            const mostMs = Math.max(kLeastUntilStaleMs, kIntervalsUntilStale * this.snapshot.interval * 1000);
            return silentMs > mostMs ? "nothing comes from oko-host any more" : "";
        }

        show() {
            const problem = this.problem();
            const isFresh = this.snapshot !== null && problem === "";
            const since = this.snapshot ? ". The values below are of " + oko.clock(this.snapshot.timeMs) + "." : ".";
            oko.showBanner(problem ? "Not live: " + problem + (this.snapshot && this.snapshot.live ? since : ".") : "");
            oko.setText(document.getElementById("status"), isFresh ? "Live, " + oko.clock(this.snapshot.timeMs) : this.snapshot ? "Not live" : "Waiting for values");
            document.getElementById("status").classList.toggle("is-live", isFresh);
            document.body.classList.toggle("not-live", !isFresh);
            if (!this.snapshot) return oko.showTitle(problem ? "! no live data" : "waiting", null);
            this.table.show(this.snapshot, isFresh);
            oko.showAlarms(this.snapshot);
            oko.showTitle(oko.titleOf(this.snapshot, isFresh), this.snapshot);
            this.showAges();
        }

        showAges() {
            this.table.showAges(this.snapshot, (performance.now() - this.arrived) / 1000);
        }

        tick() {
            if (!this.snapshot) return;
            const isStale = this.problem() !== "";
            if (isStale !== document.body.classList.contains("not-live")) this.show();
            this.showAges();
        }
    }

    function showReport(source) {
        const charts = new oko.Charts(source);
        const events = new oko.EventTable((ms) => charts.showTime(ms));
        source.start({
            report: function (head) {
                oko.showHeading(head);
                document.title = "Report: " + head.device + " - oko-host" + (head.simulated ? " (simulated)" : "");
                oko.setText(document.getElementById("status"), "Report");
                oko.setText(document.getElementById("made-by"), "Made by oko-host " + head.version);
                oko.showSummary(head);
                charts.build(head.channels, head.lastMs, [head.firstMs, head.lastMs]);
            },
            event: function (event) {
                events.add(event, true);
                charts.addEvent(event);
            },
        });
        return {charts, events};
    }

    const source = oko.reportSource();
    oko.page = source ? showReport(source) : new LivePage();
})();
