"use strict";
// Light or dark: as the system has it, until someone chooses.
(function () {
    const button = document.getElementById("theme");
    const system = window.matchMedia("(prefers-color-scheme: dark)");
    const listeners = [];

    function stored() {
        try {
            return localStorage.getItem("oko-theme");
        } catch (error) {
            return null; // a file of its own has no storage in some browsers
        }
    }

    function isDark() {
        const chosen = document.documentElement.dataset.theme;
        return chosen ? chosen === "dark" : system.matches;
    }

    function changed() {
        const other = isDark() ? "Light" : "Dark";
        button.textContent = other;
        button.setAttribute("aria-label", "Show the page " + other.toLowerCase());
        listeners.forEach((listener) => listener());
    }

    button.addEventListener("click", function () {
        const theme = isDark() ? "light" : "dark";
        document.documentElement.dataset.theme = theme;
        try {
            localStorage.setItem("oko-theme", theme);
        } catch (error) {
            // Then it is chosen again next time.
        }
        changed();
    });
    system.addEventListener("change", changed);

    if (stored()) document.documentElement.dataset.theme = stored();
    changed();

    oko.onTheme = (listener) => listeners.push(listener);

    // What the style sheet says now; canvases cannot ask it themselves.
    oko.color = (name) => getComputedStyle(document.documentElement).getPropertyValue(name).trim();

    oko.seriesColor = (index) => oko.color("--series-" + (index % 8));

    // More lines than colours: then they are dashed.
    oko.seriesDashes = (index) => [null, [7, 3], [2, 2]][Math.floor(index / 8) % 3];
})();
