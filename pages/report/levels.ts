// SPDX-License-Identifier: MIT
import {blob, columnOf, type Level, type Signal} from "./model";

/** What is drawn of a signal: times, and for each column as many values; null where a curve is broken. */
export interface Slice {
    times: number[];
    columns: (number | null)[][];
}

/** A step of more than so many usual ones is a gap, as in the summary of a run. */
const gap = 10;

/** The first index at which `times` isn't below `time`. */
export function lowerBound(times: ArrayLike<number>, time: number, count = times.length): number {
    let low = 0;
    let high = count;
    while (low < high) {
        const middle = (low + high) >> 1;
        if ((times[middle] ?? 0) < time) low = middle + 1;
        else high = middle;
    }
    return low;
}

/** When a sample was, or when a bucket begins. */
export function timeOf(level: Level, index: number): number {
    if (level.times === null) return level.begin + index * level.step;
    return blob(level.times)[index] ?? 0;
}

/** Which points of a level touch a time range, one beyond it on each side, so that curves go to the edge. */
export function rangeOf(level: Level, begin: number, end: number): [number, number] {
    let from: number;
    let to: number;
    if (level.times === null) {
        from = Math.floor((begin - level.begin) / level.step) - 1;
        to = Math.ceil((end - level.begin) / level.step) + 1;
    } else {
        const times = blob(level.times);
        from = lowerBound(times, begin - level.step) - 1;
        to = lowerBound(times, end) + 2;
    }
    return [Math.max(0, Math.min(level.count, from)), Math.max(0, Math.min(level.count, to))];
}

/** The coarsest level that still has about a point for each pixel, or else the finest. */
export function levelFor(signal: Signal, begin: number, end: number, width: number): Level | undefined {
    return signal.levels.find((level) => {
        const [from, to] = rangeOf(level, begin, end);
        return to - from >= width;
    }) ?? signal.levels.at(-1);
}

/** Samples as they are; each bucket as a stroke from its lowest to its highest value. */
export function sliceOf(signal: Signal, begin: number, end: number, width: number): Slice | undefined {
    const level = levelFor(signal, begin, end, width);
    if (level === undefined) return undefined;
    const sources = signal.columns.map((_, c) => columnOf(level, c));
    const slice: Slice = {times: [], columns: sources.map(() => [])};
    const [from, to] = rangeOf(level, begin, end);
    let before = NaN; // the last time at which there was anything
    for (let i = from; i < to; ++i) {
        const time = timeOf(level, i);
        // A bucket in which nothing came is no gap by itself: it may be shorter than the way between two samples.
        if (level.step > 0 && sources.every(({low}) => Number.isNaN(low[i]))) continue;
        if (signal.period > 0 && time - before > gap * signal.period + level.step) {
            slice.times.push((before + time) / 2); // breaks the curve
            for (const column of slice.columns) column.push(null);
        }
        before = time + level.step;
        if (level.step > 0) slice.times.push(time + 0.25 * level.step, time + 0.75 * level.step);
        else slice.times.push(time);
        sources.forEach(({low, high}, c) => {
            slice.columns[c]?.push(known(low[i]));
            if (level.step > 0) slice.columns[c]?.push(known(high[i]));
        });
    }
    return slice;
}

function known(value: number | undefined): number | null {
    return value !== undefined && Number.isFinite(value) ? value : null;
}

/** Of the finest level what holds at a time: a range of values for each column. */
export function valuesAt(signal: Signal, time: number): {low: number[]; high: number[]} | undefined {
    const level = signal.levels.at(-1);
    if (level === undefined || level.count === 0) return undefined;
    let index: number;
    if (level.times === null) {
        index = Math.floor((time - level.begin) / level.step);
    } else {
        index = lowerBound(blob(level.times), time);
        const isBucket = level.step > 0;
        if (index > 0 && (isBucket || time - timeOf(level, index - 1) < timeOf(level, index) - time)) --index;
        if (index >= level.count) --index;
    }
    if (index < 0 || index >= level.count) return undefined;
    const columns = signal.columns.map((_, c) => columnOf(level, c));
    return {low: columns.map(({low}) => low[index] ?? NaN), high: columns.map(({high}) => high[index] ?? NaN)};
}
