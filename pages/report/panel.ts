// SPDX-License-Identifier: MIT
import uPlot from "uplot";
import {clock, clockSteps, digits, make, timeLabels, valueLabels} from "./format";
import {drawMap, mapRange, mapRows, mapScale} from "./heatmap";
import {sliceOf, valuesAt} from "./levels";
import {drawMarks} from "./marks";
import type {Report, Signal} from "./model";
import type {Theme} from "./theme";
import {ValueTable} from "./valuetable";
import type {View} from "./view";
import {drawWay, wayRange} from "./way";
import {wordsOf} from "./words";

const plotHeight = {curves: 190, points: 190, way: 190, map: 230, marks: 110};
/** More columns than this have no button each: they'd be a wall of them. */
const mostButtons = 24;

/** One signal: a title, what the curves are called, the plot, and its values as a table. */
export class Panel {
    readonly element: HTMLElement;
    private readonly frame = make("div", {class: "plot"});
    private readonly readings: HTMLElement[] = [];
    private readonly buttons: HTMLButtonElement[] = [];
    private readonly cursorTime = make("span", {class: "cursor-time"});
    private readonly values: ValueTable;
    private readonly hidden = new Set<number>();
    private plot: uPlot | null = null;
    private isStale = true;
    private isNear = false;
    private isPointing = false;

    constructor(private readonly signal: Signal, private readonly report: Report, private readonly view: View,
        private readonly theme: Theme, index: number) {
        this.values = new ValueTable(signal, view);
        const id = `signal-${index}`;
        this.frame.style.height = `${plotHeight[signal.kind]}px`;
        this.element = make("section", {class: "panel", id, tabindex: 0, role: "group", "aria-labelledby": `${id}-name`,
            "aria-describedby": `${id}-words`},
        make("div", {class: "panel-head"},
            make("h3", {id: `${id}-name`}, signal.name),
            ...(signal.unit === "" ? [] : [make("span", {class: "unit"}, signal.unit)]),
            ...(signal.watched ? [make("span", {class: "tag"}, "watched")] : []),
            this.legend(), this.cursorTime),
        this.frame,
        make("p", {class: "words", id: `${id}-words`}, wordsOf(signal, report.clock)),
        this.values.element);
        this.listen();
    }

    /** Draws what has changed while nobody saw it, as on paper. */
    refresh(): void {
        if (this.isStale) this.update();
    }
    dispose(): void {
        this.plot?.destroy();
        this.plot = null;
        this.isStale = true;
    }

    private listen(): void {
        new IntersectionObserver((entries) => {
            this.isNear = entries.some((entry) => entry.isIntersecting);
            if (this.isNear) this.refresh();
        }, {rootMargin: "300px"}).observe(this.frame);
        let width = 0;
        new ResizeObserver(() => {
            if (width === this.frame.clientWidth) return;
            width = this.frame.clientWidth;
            this.later();
        }).observe(this.frame);
        this.view.onChange(() => {
            this.later();
            this.values.update();
        });
        this.view.onCursor(() => this.showCursor());
        this.theme.onChange(() => {
            this.dispose();
            this.colourLegend();
            this.later();
        });
    }

    private later(): void {
        this.isStale = true;
        if (this.isNear) this.update();
    }

    private legend(): HTMLElement {
        const {signal} = this;
        if (signal.kind === "map") return make("span", {class: "legend"}, mapScale(signal));
        signal.columns.slice(0, mostButtons).forEach((column, i) => {
            const reading = make("span", {class: "reading"});
            const button = make("button", {type: "button", "aria-pressed": "true", title: `show or hide ${column.name}`},
                make("span", {class: signal.kind === "points" || signal.kind === "marks" ? "swatch dot" : "swatch"}),
                column.name, reading);
            button.addEventListener("click", () => {
                if (this.hidden.delete(i)) button.setAttribute("aria-pressed", "true");
                else {
                    this.hidden.add(i);
                    button.setAttribute("aria-pressed", "false");
                }
                this.dispose();
                this.later();
            });
            this.readings.push(reading);
            this.buttons.push(button);
        });
        this.colourLegend();
        return make("span", {class: "legend"}, ...this.buttons);
    }

    private colourLegend(): void {
        this.buttons.forEach((button, i) => button.style.setProperty("--curve", this.theme.curve(i)));
    }

    private update(): void {
        const width = this.frame.clientWidth;
        if (width === 0) return;
        this.isStale = false;
        if (this.plot === null) this.create(width);
        const plot = this.plot;
        if (plot === null) return;
        if (plot.width !== width) plot.setSize({width, height: plotHeight[this.signal.kind]});
        plot.setData(this.data(width), false);
        // Without data of its own the plot asks for no range of values.
        plot.setScale("x", {min: this.view.begin, max: this.view.end});
        this.showCursor();
    }

    /** Whether the plot draws it by itself. */
    private get hasSeries(): boolean {
        return this.signal.kind === "curves" || this.signal.kind === "points";
    }

    private seriesOf(): uPlot.Series[] {
        const {signal, theme} = this;
        const nothing = {paths: () => null, points: {show: false}};
        if (!this.hasSeries) return [{...nothing, show: signal.kind === "way"}];
        return signal.columns.map((_, i) => {
            const show = !this.hidden.has(i);
            const stroke = theme.curve(i);
            if (signal.kind === "points")
                return {show, stroke, paths: () => null, points: {show: true, size: 7, width: 1.5, fill: theme.fill(i)}};
            return {show, stroke, width: 1.25, dash: theme.dash(i), points: {size: 4, fill: stroke}};
        });
    }

    private data(width: number): uPlot.AlignedData {
        const {begin, end} = this.view;
        // What is drawn otherwise has two values that nobody sees, which say how far the axis goes.
        if (this.signal.kind === "way") return [[begin, end], wayRange(this.signal, begin, end, this.hidden)];
        if (!this.hasSeries) return [[begin, end], [0, 0]];
        const slice = sliceOf(this.signal, begin, end, width);
        if (slice === undefined) return [[begin, end], [null, null]];
        return [slice.times, ...slice.columns];
    }

    private create(width: number): void {
        const {signal, theme, view} = this;
        const grid = {stroke: theme.text("--grid"), width: 1};
        const axis = {stroke: theme.text("--faint"), grid, ticks: {...grid, size: 4}, font: "11px system-ui, sans-serif"};
        const {isLong} = view;
        this.plot = new uPlot({
            width, height: plotHeight[signal.kind],
            legend: {show: false},
            padding: [8, 12, 0, 0],
            cursor: {
                sync: {key: "report", scales: ["x", null]},
                drag: {x: true, y: false, setScale: false},
                points: {show: false},
                y: false,
                bind: {dblclick: () => () => (view.showAll(), null)},
            },
            scales: {x: {time: false, range: () => [view.begin, view.end]}, y: this.scaleOfValues()},
            axes: [
                {...axis, ...(isLong ? {incrs: clockSteps} : {}), size: 28, grid: {...grid, show: signal.kind !== "map"},
                    values: (_, ticks, __, ___, step) => timeLabels(ticks, step, isLong)},
                // Empty beside marks: so the times of all panels stand below each other.
                {...axis, size: 64, ...(signal.kind === "map" ? {label: mapRows(signal), labelSize: 16, size: 48} : {}),
                    grid: {...grid, show: signal.kind !== "map" && signal.kind !== "marks"},
                    values: (_, ticks, __, ___, step) =>
                        signal.kind === "marks" ? ticks.map(() => "") : valueLabels(ticks, step),
                    ticks: {...axis.ticks, show: signal.kind !== "marks"}},
            ],
            series: [{}, ...this.seriesOf()],
            hooks: {
                setSelect: [(plot) => this.takeSelection(plot)],
                setCursor: [(plot) => this.takeCursor(plot)],
                drawClear: [(plot) => signal.kind === "map" && drawMap(plot, signal, view)],
                draw: [(plot) => {
                    drawWay(plot, signal, theme, this.hidden);
                    drawMarks(plot, signal, this.report, theme);
                }],
            },
        }, this.data(width), this.frame);
        this.plot.over.addEventListener("mouseleave", () => view.point(null));
        this.plot.over.addEventListener("wheel", (event) => this.wheel(event), {passive: false});
    }

    private scaleOfValues(): uPlot.Scale {
        if (this.signal.kind === "map") return {range: () => mapRange(this.signal)};
        if (this.signal.kind === "marks") return {range: () => [0, 1]};
        return {range: (_, low, high) => {
            if (low === null || high === null || !Number.isFinite(low)) return [0, 1];
            const room = high > low ? 0.06 * (high - low) : Math.abs(high) * 0.1 || 1;
            return [low - room, high + room];
        }};
    }

    private takeSelection(plot: uPlot): void {
        const {left, width} = plot.select;
        if (width < 4) return;
        const begin = plot.posToVal(left, "x");
        const end = plot.posToVal(left + width, "x");
        plot.setSelect({left: 0, top: 0, width: 0, height: 0}, false);
        this.view.show(begin, end);
    }

    /** Of the plot that the pointer is in; the others hear of it from the view. */
    private takeCursor(plot: uPlot): void {
        if (this.isPointing || !plot.over.matches(":hover")) return;
        const left = plot.cursor.left ?? -1;
        this.view.point(left < 0 ? null : plot.posToVal(left, "x"));
    }

    /** Zooms about the pointer, moves with Shift; where nothing is left to zoom out of, the page scrolls. */
    private wheel(event: WheelEvent): void {
        const {view} = this;
        if (event.deltaY > 0 && !event.shiftKey && view.isWhole) return;
        event.preventDefault();
        if (event.shiftKey || Math.abs(event.deltaX) > Math.abs(event.deltaY)) {
            view.move(((event.deltaX || event.deltaY) / 1000));
            return;
        }
        const box = this.plot?.over.getBoundingClientRect();
        const time = box && this.plot ? this.plot.posToVal(event.clientX - box.left, "x") : undefined;
        view.zoom(Math.exp(Math.max(-1, Math.min(1, event.deltaY / 400))), time);
    }

    private showCursor(): void {
        const {view, plot} = this;
        const time = view.cursor;
        if (plot !== null && !plot.over.matches(":hover")) {
            const left = time === null ? -10 : plot.valToPos(time, "x");
            this.isPointing = true;
            plot.setCursor({left, top: time === null ? -10 : 5}, false);
            this.isPointing = false;
        }
        if (!this.isNear) return;
        this.cursorTime.textContent =
            time === null ? "" : `at ${clock(time, view.span / 1000, view.isLong)}${view.unit}`;
        const found = time === null || !this.hasSeries ? undefined : valuesAt(this.signal, time);
        this.readings.forEach((reading, i) => {
            const low = found?.low[i];
            const high = found?.high[i];
            reading.textContent = low === undefined || Number.isNaN(low) ? ""
                : low === high ? digits(low) : `${digits(low)} to ${digits(high)}`;
        });
    }
}
