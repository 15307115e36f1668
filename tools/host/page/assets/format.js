"use strict";
// How numbers and times are written.
var oko = {};

(function () {
    // Shows what the device can tell, without the noise of its last binary digits.
    oko.value = function (value) {
        if (value === null || value === undefined || Number.isNaN(value)) return "\u2013";
        return value.toFixed(2);
    };

    // A number as someone typed it: 38.5 is 38.5, not 38.50.
    oko.plain = function (value) {
        return String(Math.round(value * 1e6) / 1e6);
    };

    oko.duration = function (seconds) {
        if (seconds === null || seconds === undefined) return "\u2013";
        if (seconds < 90) return Math.floor(seconds) + " s";
        if (seconds < 5400) return Math.round(seconds / 60) + " min";
        if (seconds < 129600) return Math.round(seconds / 3600) + " h";
        return Math.round(seconds / 86400) + " days";
    };

    const two = (number) => String(number).padStart(2, "0");
    const months = ["Jan", "Feb", "Mar", "Apr", "May", "Jun", "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"];

    oko.clock = function (ms) {
        const time = new Date(ms);
        return two(time.getHours()) + ":" + two(time.getMinutes()) + ":" + two(time.getSeconds());
    };

    oko.day = function (ms) {
        const time = new Date(ms);
        return time.getDate() + " " + months[time.getMonth()];
    };

    oko.dateTime = (ms) => oko.day(ms) + " " + oko.clock(ms);

    oko.utc = (ms) => new Date(ms).toISOString();

    // "20:40 to 21:40", with days where there are two.
    oko.span = function (from, to) {
        const sameDay = oko.day(from) === oko.day(to);
        return oko.dateTime(from) + " to " + (sameDay ? oko.clock(to) : oko.dateTime(to));
    };

    oko.element = function (tag, properties, ...children) {
        const element = document.createElement(tag);
        for (const [name, value] of Object.entries(properties || {})) {
            if (name in element) element[name] = value;
            else element.setAttribute(name, value);
        }
        element.append(...children);
        return element;
    };

    // A time in the reader's zone that tells UTC to who points at it.
    oko.timeElement = (ms) => oko.element("time", {dateTime: oko.utc(ms), title: oko.utc(ms)}, oko.dateTime(ms));

    // Touches the document only where something changed: screen readers and selections keep their place.
    oko.setText = function (element, text) {
        if (element.textContent !== text) element.textContent = text;
    };

    oko.quantityNames = {temperature: "Temperature", gas: "Gas", humidity: "Humidity"};
})();
