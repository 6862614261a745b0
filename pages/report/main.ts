// SPDX-License-Identifier: MIT
import "uplot/dist/uPlot.min.css";
import "./report.css";
import {clock, make} from "./format";
import {graphSections} from "./graph";
import {readReport, type Report} from "./model";
import {Panel} from "./panel";
import {header, settingSections, summarySections} from "./summary";
import {Theme} from "./theme";
import {listenToKeys, View} from "./view";

function viewOf(report: Report): View {
    const shown = report.signals.filter((signal) => signal.samples > 0);
    const first = Math.min(...shown.map((signal) => signal.begin));
    const last = Math.max(...shown.map((signal) => signal.end));
    const periods = shown.map((signal) => signal.period).filter((period) => period > 0);
    if (!Number.isFinite(first)) return new View(0, 1, 0.1, report.clock);
    const room = last > first ? 0 : 0.5; // around one sample
    return new View(first - room, last + room, Math.min(...periods, last > first ? (last - first) / 8 : 0.1),
        report.clock);
}

function button(text: string, title: string, action: () => void): HTMLButtonElement {
    // What a reader hears: a sign alone says nothing.
    const isWord = /^[a-z]+$/.test(text);
    const element = make("button", {type: "button", title, ...(isWord ? {} : {"aria-label": title})}, text);
    element.addEventListener("click", action);
    return element;
}

function toolbar(view: View, theme: Theme): HTMLElement {
    const range = make("output", {class: "range", "aria-live": "polite"});
    const tell = (): void => {
        const step = view.span / 1000;
        range.textContent =
            `${clock(view.begin, step, view.isLong)} to ${clock(view.end, step, view.isLong)}${view.unit}`;
    };
    view.onChange(tell);
    tell();
    return make("div", {class: "toolbar", role: "toolbar", "aria-label": "what the panels show"},
        button("−", "zoom out", () => view.zoom(2)), button("+", "zoom in", () => view.zoom(0.5)),
        button("◀", "earlier", () => view.move(-0.5)), button("▶", "later", () => view.move(0.5)),
        button("all", "show everything", () => view.showAll()), range,
        button("◐", "dark or light", () => theme.toggle()));
}

function help(): HTMLElement {
    const key = (text: string): HTMLElement => make("kbd", {}, text);
    return make("p", {class: "help"},
        "Drag over a panel or turn the wheel to zoom, double-click for everything. Keys, with a panel in focus: ",
        key("←"), " ", key("→"), " move, ", key("+"), " ", key("−"), " zoom, ", key("Home"), " ", key("End"),
        " go to the begin and the end, ", key("0"), " shows everything, ", key("Shift"), " ", key("←"), " ", key("→"),
        " moves the cursor.");
}

function signalSection(report: Report, view: View, theme: Theme, panels: Panel[]): HTMLElement {
    const section = make("section", {id: "signals", "aria-labelledby": "signals-head"},
        make("h2", {id: "signals-head"}, "Signals"));
    if (report.signals.length === 0) {
        section.append(make("p", {}, "Nothing has run, so there is nothing to see."));
        return section;
    }
    const origin = report.origin === null ? [] : [make("p", {class: "origin"}, `Second 0 is ${report.origin}.`)];
    section.append(toolbar(view, theme), help(), ...origin, ...panels.map((panel) => panel.element));
    listenToKeys(section, view);
    return section;
}

function open(): void {
    const report = readReport();
    const theme = new Theme();
    const view = viewOf(report);
    const panels = report.signals.map((signal, i) => new Panel(signal, report, view, theme, i));
    addEventListener("beforeprint", () => panels.forEach((panel) => panel.refresh()));
    const main = make("main", {}, header(report), ...summarySections(report), ...graphSections(report),
        signalSection(report, view, theme, panels), ...settingSections(report));
    // The elements behind it hold the numbers.
    document.querySelector("main")?.replaceWith(main);
    // For tests, and for who looks at how long it takes to open.
    performance.mark("report-open");
}

open();
