"use strict";
// The table of channels, and setting their targets.
(function () {
    const kTokenName = "oko-token";

    function storedToken() {
        try {
            return sessionStorage.getItem(kTokenName) || "";
        } catch (error) {
            return "";
        }
    }

    function storeToken(token) {
        try {
            sessionStorage.setItem(kTokenName, token);
        } catch (error) {
            // Then it is asked for again.
        }
    }

    // Asks for the token; resolves to "" when the person does not want to give one.
    function askToken(problem) {
        const dialog = document.getElementById("token-dialog");
        const input = document.getElementById("token");
        oko.setText(document.getElementById("token-problem"), problem);
        input.value = "";
        return new Promise(function (resolve) {
            dialog.addEventListener("close", () => resolve(dialog.returnValue === "ok" ? input.value.trim() : ""), {once: true});
            dialog.returnValue = "cancel";
            dialog.showModal();
            input.focus();
        });
    }

    const problems = {
        403: "this oko-host lets nobody set targets",
        404: "the device has no such channel",
        422: "this is no target for it",
        504: "the device gave no answer",
    };

    function outcome(reply) {
        if (reply.status !== 200) {
            return {text: reply.body.error || problems[reply.status] || "not set (HTTP " + reply.status + ")", isGood: false};
        }
        const {asked, taken, clamped} = reply.body;
        return clamped
            ? {text: "asked " + oko.plain(asked) + ", the device took " + oko.plain(taken), isGood: false}
            : {text: "set to " + oko.plain(taken), isGood: true};
    }

    // Tries without a token first: a cookie may have it. Asks until one is taken, or none is given.
    async function setTarget(source, key, value) {
        let token = storedToken();
        let reply = await source.setTarget(key, value, token);
        while (reply.status === 401) {
            token = await askToken(token ? "oko-host does not know this token." : "");
            storeToken(token);
            if (!token) return {text: "not set: no token was given", isGood: false};
            reply = await source.setTarget(key, value, token);
        }
        return outcome(reply);
    }

    function parseTarget(text) {
        const number = text.trim().replace(",", ".");
        return /^[+-]?(\d+\.?\d*|\.\d+)$/.test(number) ? Number(number) : null;
    }

    function settingForm(source, channel) {
        const range = oko.plain(channel.min) + " to " + oko.plain(channel.max) + " " + channel.unit;
        const input = oko.element("input", {type: "text", inputMode: "decimal", size: 6, autocomplete: "off",
            title: range, "aria-label": "New target of " + channel.name + ", " + range});
        const button = oko.element("button", {type: "submit", "aria-label": "Set the target of " + channel.name}, "Set");
        const result = oko.element("output", {"aria-live": "polite"});
        const form = oko.element("form", {className: "set", noValidate: true}, input, " ", button, " ", result);
        const tell = function (text, isGood) {
            result.textContent = text;
            result.className = isGood ? "good" : "problem";
        };
        form.addEventListener("submit", async function (submission) {
            submission.preventDefault();
            const value = parseTarget(input.value);
            if (value === null) return tell("type a number, " + range, false);
            button.disabled = true;
            tell("setting\u2026", true);
            try {
                const {text, isGood} = await setTarget(source, channel.key, value);
                tell(text, isGood);
                if (isGood) input.value = "";
            } catch (error) {
                tell("not set: oko-host cannot be reached", false);
            }
            button.disabled = false;
        });
        return form;
    }

    const stateClasses = {
        "ok": "ok", "heating": "off", "below": "off", "above": "off", "no answer": "silent", "no value": "silent", "stale": "silent",
    };
    const stateSigns = {ok: "\u2713 ", off: "", silent: "\u2715 "};
    const stateArrows = {heating: "\u25b2 ", below: "\u25bc ", above: "\u25b2 "};

    oko.showState = function (cell, state, isAirMode) {
        const kind = stateClasses[state] || "";
        const badge = oko.element("span", {className: "state " + kind},
            (stateArrows[state] || stateSigns[kind] || "") + state);
        const wanted = badge.textContent + (isAirMode ? " air" : "");
        if (cell.dataset.shown === wanted) return;
        cell.dataset.shown = wanted;
        cell.replaceChildren(badge);
        if (isAirMode) cell.append(" ", oko.element("span", {className: "tag"}, "air mode"));
    };

    oko.swatch = function (index) {
        return oko.element("span", {className: "swatch series-" + (index % 8) + " dashes-" + (Math.floor(index / 8) % 3),
            "aria-hidden": "true"});
    };

    function band(channel) {
        if (!channel.canSet || channel.target === null) return "\u2013";
        return oko.value(channel.target - channel.below) + " \u2026 " + oko.value(channel.target + channel.above);
    }

    class ChannelTable {
        constructor(source) {
            this.source = source;
            this.section = document.getElementById("channels");
            this.body = this.section.querySelector("tbody");
            this.rows = new Map();
        }

        build(snapshot) {
            const canSet = snapshot.allowSet && snapshot.channels.some((channel) => channel.canSet);
            this.section.classList.toggle("can-set", canSet);
            this.rows.clear();
            const counts = {};
            const rows = snapshot.channels.map((channel) => {
                const index = counts[channel.kind] = (counts[channel.kind] ?? -1) + 1;
                const cell = (label, className) => oko.element("td", {className: className || "", "data-label": label});
                const cells = {value: cell("Value", "number value"), target: cell("Target", "number"),
                    band: cell("Band", "number"), state: cell("State", "state-cell"), age: cell("Age", "number"),
                    setting: cell("New target", "setting")};
                if (canSet && channel.canSet) cells.setting.append(settingForm(this.source, channel));
                this.rows.set(channel.key, cells);
                return oko.element("tr", {"data-key": channel.key},
                    oko.element("th", {scope: "row"}, oko.swatch(index), channel.name),
                    oko.element("td", {"data-label": "Quantity", className: "quantity"}, channel.kind),
                    ...Object.values(cells));
            });
            this.body.replaceChildren(...rows);
            this.section.hidden = false;
        }

        // What is not fresh shows no state: whoever glances at it must not take it for now.
        show(snapshot, isFresh) {
            const alarmed = new Set(snapshot.alarms.filter((alarm) => alarm.phase === "on").map((alarm) => alarm.channel));
            for (const channel of snapshot.channels) {
                const cells = this.rows.get(channel.key);
                const unit = (number) => (number === null ? "\u2013" : oko.value(number) + "\u00a0" + channel.unit);
                oko.setText(cells.value, unit(channel.current));
                oko.setText(cells.target, unit(channel.target));
                oko.setText(cells.band, band(channel));
                oko.showState(cells.state, isFresh ? channel.state : "stale", channel.airMode);
                cells.value.parentElement.classList.toggle("alarmed", isFresh && alarmed.has(channel.key));
            }
            this.section.classList.toggle("old", !isFresh);
        }

        showAges(snapshot, secondsSince) {
            for (const channel of snapshot.channels) {
                const age = channel.ageSeconds === null ? null : channel.ageSeconds + secondsSince;
                oko.setText(this.rows.get(channel.key).age, oko.duration(age));
            }
        }
    }

    oko.ChannelTable = ChannelTable;
})();
