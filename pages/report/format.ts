// SPDX-License-Identifier: MIT

/** Six digits, without zeros at the end: more than a screen shows of a curve. */
export function digits(value: number | null | undefined, count = 6): string {
    if (value === null || value === undefined) return "–";
    if (!Number.isFinite(value)) return Number.isNaN(value) ? "nan" : value > 0 ? "inf" : "-inf";
    const size = Math.abs(value);
    if (size !== 0 && (size < 1e-4 || size >= 1e9)) return value.toExponential(count - 2).replace(/\.?0+e/, "e");
    return String(Number(value.toPrecision(count)));
}

export function counted(count: number, one: string, many = one + "s"): string {
    return `${count.toLocaleString("en")} ${count === 1 ? one : many}`;
}

/** A time of the stream: seconds, or hours, minutes and seconds where the whole is long; `step` is what shows. */
export function clock(seconds: number, step: number, isLong: boolean): string {
    const places = Math.max(0, Math.min(6, Math.ceil(-Math.log10(step) - 1e-9)));
    if (!isLong) return seconds.toFixed(places);
    const sign = seconds < 0 ? "-" : "";
    const unit = 10 ** places;
    const whole = Math.round(Math.abs(seconds) * unit) / unit;
    const hours = Math.floor(whole / 3600);
    const minutes = Math.floor((whole % 3600) / 60);
    const rest = (whole % 60).toFixed(places).padStart(places > 0 ? places + 3 : 2, "0");
    return `${sign}${hours}:${String(minutes).padStart(2, "0")}:${rest}`;
}

/** Labels with as few digits as say where the ticks stand: steps of 2.5 need one more than those of 2 and 5. */
function exactLabels(ticks: number[], step: number, fewest: number,
    write: (tick: number, count: number) => string): string[] {
    const most = 17; // more tell no two numbers apart
    for (let count = fewest; ; ++count) {
        const labels = ticks.map((tick) => write(tick, count));
        const isExact = labels.every((label, i) => Math.abs(Number(label) - (ticks[i] ?? 0)) <= 1e-3 * step);
        if (isExact || count >= most) return labels;
    }
}

export function timeLabels(ticks: number[], step: number, isLong: boolean): string[] {
    if (isLong) return ticks.map((tick) => clock(tick, step, isLong));
    return exactLabels(ticks, step, 0, (tick, count) => tick.toFixed(count));
}

/** Letters for which there is room beside an axis. */
const mostLetters = 9;

/** Where numbers in full are too long, as of a ripple on a large one: about the lowest, and the ways from there. */
export function valueLabels(ticks: number[], step: number): string[] {
    const plain = ticks.map((tick) => digits(tick));
    const labels = exactLabels(ticks, step, 6, digits);
    if (labels.every((label, i) => label === plain[i] || label.length <= mostLetters)) return labels;
    const lowest = ticks[0] ?? 0;
    return ticks.map((tick, i) => i === 0 ? `≈${digits(tick)}` : `+${digits(Math.round((tick - lowest) / step) * step)}`);
}

/** Steps between times that are read as hours, minutes and seconds. */
export const clockSteps = [
    0.001, 0.002, 0.005, 0.01, 0.02, 0.05, 0.1, 0.2, 0.5, 1, 2, 5, 10, 15, 30, 60, 120, 300, 600, 900, 1800, 3600,
    7200, 14400, 21600, 43200, 86400, 172800, 604800,
];

/** Beyond this many seconds from the begin, times read better as hours and minutes. */
export const longTime = 600;

type Attributes = Record<string, string | number>;

/** An element with text or children; all that names of files and blocks go through, so none of it is markup. */
export function make<Tag extends keyof HTMLElementTagNameMap>(
    tag: Tag,
    attributes: Attributes = {},
    ...children: (Node | string)[]
): HTMLElementTagNameMap[Tag] {
    const element = document.createElement(tag);
    for (const [name, value] of Object.entries(attributes)) element.setAttribute(name, String(value));
    element.append(...children);
    return element;
}

export function draw(tag: string, attributes: Attributes = {}, ...children: (Node | string)[]): SVGElement {
    const element = document.createElementNS("http://www.w3.org/2000/svg", tag);
    for (const [name, value] of Object.entries(attributes)) element.setAttribute(name, String(value));
    element.append(...children);
    return element;
}

/** A table whose first row and column are headings. Columns of numbers stand at the right. */
export function table(caption: string, heads: string[], rows: (Node | string)[][], numbers: number[] = []): HTMLElement {
    const kind = (i: number): Attributes => numbers.includes(i) ? {class: "number"} : {};
    const head = make("tr", {}, ...heads.map((text, i) => make("th", {scope: "col", ...kind(i)}, text)));
    const body = rows.map((row) =>
        make("tr", {}, ...row.map((cell, i) => {
            if (i === 0) return make("th", {scope: "row"}, cell);
            return make("td", kind(i), cell);
        })));
    const whole = make("table", {}, make("caption", {}, caption), make("thead", {}, head), make("tbody", {}, ...body));
    // It may be wider than the page: then it is moved within its frame, by keys, too.
    return make("div", {class: "wide", tabindex: 0, role: "region", "aria-label": caption}, whole);
}
