// SPDX-License-Identifier: MIT
import type uPlot from "uplot";
import {digits, make} from "./format";
import {levelFor, rangeOf, timeOf} from "./levels";
import {columnOf, type Level, type Signal} from "./model";
import {heat} from "./theme";
import type {View} from "./view";

type Shades = NonNullable<Signal["shades"]>;

function shadesOf(signal: Signal): Shades {
    return signal.shades ?? {low: 0, high: 1, decibels: null};
}

function partOf(value: number, shades: Shades): number {
    if (shades.decibels === null) return (value - shades.low) / (shades.high - shades.low || 1);
    return value <= shades.low ? 0 : 1 - Math.log10(shades.high / value) * 20 / shades.decibels;
}

/** What the colours mean. */
export function mapScale(signal: Signal): HTMLElement {
    const shades = shadesOf(signal);
    const stops = Array.from({length: 17}, (_, i) => `rgb(${heat(i / 16).join(" ")})`).join(",");
    const bar = make("span", {class: "ramp", "aria-hidden": "true"});
    bar.style.background = `linear-gradient(90deg, ${stops})`;
    const low = shades.decibels === null ? digits(shades.low) : `${shades.decibels} dB below`;
    return make("span", {class: "shades"}, low, bar, `${digits(shades.high)} ${signal.unit}`.trim());
}

/** From half an element below the first to half a one above the last, in what they stand for. */
export function mapRange(signal: Signal): [number, number] {
    const {begin, apart} = signal.rows ?? {begin: 0, apart: 1};
    return [begin - 0.5 * apart, begin + (signal.columns.length - 0.5) * apart];
}

/** What the axis counts. */
export function mapRows(signal: Signal): string {
    return signal.rows === null ? "element" : signal.rows.unit;
}

const pictures = new Map<string, HTMLCanvasElement>();

/** A level as a picture, a pixel for each element and bucket; made once. Too wide a one is drawn in parts. */
function pictureOf(signal: Signal, level: Level, from: number, to: number): HTMLCanvasElement {
    const key = `${level.low} ${from} ${to}`;
    const known = pictures.get(key);
    if (known) return known;
    const shades = shadesOf(signal);
    const height = signal.columns.length;
    const width = to - from;
    const canvas = document.createElement("canvas");
    canvas.width = Math.max(1, width);
    canvas.height = Math.max(1, height);
    const context = canvas.getContext("2d");
    if (!context || width < 1) return canvas;
    const image = context.createImageData(width, height);
    // Of a bucket the highest value counts, so that what is short can be seen.
    signal.columns.forEach((_, r) => {
        const row = columnOf(level, r).high;
        for (let i = 0; i < width; ++i) {
            const value = row[from + i] ?? NaN;
            if (!Number.isFinite(value)) continue;
            const place = 4 * ((height - 1 - r) * width + i);
            const [red, green, blue] = heat(partOf(value, shades));
            image.data[place] = red;
            image.data[place + 1] = green;
            image.data[place + 2] = blue;
            image.data[place + 3] = 255;
        }
    });
    context.putImageData(image, 0, 0);
    if (pictures.size > 40) pictures.clear();
    pictures.set(key, canvas);
    return canvas;
}

const mostWide = 8192;

export function drawMap(plot: uPlot, signal: Signal, view: View): void {
    const level = levelFor(signal, view.begin, view.end, plot.over.clientWidth);
    if (level === undefined || level.count === 0) return;
    const [first, last] = level.count <= mostWide ? [0, level.count] : rangeOf(level, view.begin, view.end);
    const picture = pictureOf(signal, level, first, last);
    const {ctx, bbox} = plot;
    ctx.save();
    ctx.beginPath();
    ctx.rect(bbox.left, bbox.top, bbox.width, bbox.height);
    ctx.clip();
    ctx.imageSmoothingEnabled = false;
    const [lowest, highest] = mapRange(signal);
    const top = plot.valToPos(highest, "y", true);
    const foot = plot.valToPos(lowest, "y", true);
    const paint = (from: number, to: number, index: number, count: number): void => {
        const left = plot.valToPos(from, "x", true);
        const right = plot.valToPos(to, "x", true);
        ctx.drawImage(picture, index, 0, count, picture.height, left, top, Math.max(1, right - left), foot - top);
    };
    if (level.times === null) {
        paint(level.begin + first * level.step, level.begin + last * level.step, 0, last - first);
    } else {
        const [from, to] = rangeOf(level, view.begin, view.end);
        for (let i = Math.max(from, first); i < Math.min(to, last); ++i) {
            const [begin, end] = reach(level, i, signal.period);
            paint(begin, end, i - first, 1);
        }
    }
    ctx.restore();
}

/** A bucket's own time. A sample reaches halfway to its neighbours, but not over a gap, and as far where it has none. */
function reach(level: Level, index: number, period: number): [number, number] {
    const time = timeOf(level, index);
    if (level.step > 0) return [time, time + level.step];
    const usual = period || 1;
    const half = (other: number): number => other < 0 || other >= level.count
        ? usual / 2 : Math.min(Math.abs(timeOf(level, other) - time) / 2, usual);
    return [time - half(index - 1), time + half(index + 1)];
}
