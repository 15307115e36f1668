"use strict";
// What has to be seen: the banner, the alarms, the events, the tab's title.
(function () {
    const kMostEvents = 1000; // in the table; all of them are in the log
    const banner = document.getElementById("banner");
    const announcer = document.getElementById("announcer");

    // Read out when it comes and goes, not each time that its words change.
    oko.showBanner = function (text) {
        if (banner.hidden !== (text === "")) oko.setText(announcer, text || "Live again");
        oko.setText(banner, text);
        banner.hidden = text === "";
    };

    oko.showHeading = function (about) {
        oko.setText(document.getElementById("device"), about.device);
        document.getElementById("simulated").hidden = !about.simulated;
        const port = about.port === null || about.port === undefined ? "" : "COM" + about.port + ", ";
        oko.setText(document.getElementById("about"), port + "one row every " + oko.plain(about.interval) + " s");
    };

    // The worst of it, in as few words as a tab has room for.
    oko.titleOf = function (snapshot, isFresh) {
        if (!isFresh) return "! no live data";
        const nameOf = (key) => (snapshot.channels.find((channel) => channel.key === key) || {name: key}).name;
        const silent = snapshot.channels.filter((channel) => channel.state === "no answer");
        if (silent.length > 0) return "! " + silent[0].name + " no answer";
        const alarm = snapshot.alarms.find((one) => one.phase === "on");
        if (alarm) return "! ALARM " + nameOf(alarm.channel) + " " + alarm.kind;
        const off = snapshot.channels.find((channel) => ["heating", "below", "above"].includes(channel.state));
        if (off) return "! " + off.name + " out of band";
        return "ok";
    };

    oko.showTitle = function (worst, snapshot) {
        const title = worst + " - oko-host" + (snapshot && snapshot.simulated ? " (simulated)" : "");
        if (document.title === title) return;
        document.title = title;
        document.getElementById("icon").href = worst.startsWith("!") ? "icon-alert.svg" : "icon.svg";
    };

    oko.showAlarms = function (snapshot) {
        const section = document.getElementById("alarms");
        const alarms = snapshot.alarms.filter((alarm) => alarm.phase === "on" || alarm.phase === "pending");
        const items = alarms.map(function (alarm) {
            const since = alarm.since === null ? "" : " since " + oko.clock(Date.parse(alarm.since));
            const word = alarm.phase === "on" ? "Alarm" : "Pending";
            return oko.element("li", {className: alarm.phase},
                oko.element("strong", {}, word), " " + (alarm.reason || alarm.channel + ": " + alarm.kind),
                oko.element("span", {className: "since"}, since));
        });
        section.querySelector("ul").replaceChildren(...items);
        section.hidden = items.length === 0;
    };

    const announced = new Set(["alarm on", "alarm off", "link lost", "link back"]);

    class EventTable {
        constructor(onPick) {
            this.section = document.getElementById("events");
            this.body = this.section.querySelector("tbody");
            this.onPick = onPick;
            this.events = [];
            document.getElementById("events-log").addEventListener("change", (change) => {
                this.section.classList.toggle("with-log", change.target.checked);
            });
            this.section.hidden = false;
        }

        clear() {
            this.events = [];
            this.body.replaceChildren();
        }

        add(event, isOld) {
            this.events.push(event);
            const time = oko.element("button", {type: "button", className: "link", title: "Show in the charts (" + oko.utc(event.timeMs) + ")"},
                oko.dateTime(event.timeMs));
            time.addEventListener("click", () => this.onPick(event.timeMs));
            this.body.prepend(oko.element("tr", {className: event.kind.replace(" ", "-")},
                oko.element("td", {}, time), oko.element("td", {}, event.kind),
                oko.element("td", {}, event.channel), oko.element("td", {}, event.text)));
            if (this.body.children.length > kMostEvents) this.body.lastElementChild.remove();
            if (!isOld && announced.has(event.kind)) {
                oko.setText(announcer, event.kind + ": " + (event.text || event.channel));
            }
        }
    }

    oko.EventTable = EventTable;
})();
