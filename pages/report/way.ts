// SPDX-License-Identifier: MIT
import type uPlot from "uplot";
import {blob, type Signal, type Way} from "./model";
import type {Theme} from "./theme";

/** Of so few samples each is to be seen. */
const pixelsForDots = 6;

/** From the lowest to the highest value in the part that the axis shows; of all where nothing is there. */
export function wayRange(signal: Signal, begin: number, end: number, hidden: ReadonlySet<number>):
    [number, number] | [null, null] {
    const shown = (signal.ways ?? []).filter((_, i) => !hidden.has(i));
    const within = extremesOf(shown, begin, end);
    const [low, high] = within[0] <= within[1] ? within : extremesOf(shown, -Infinity, Infinity);
    return low <= high ? [low, high] : [null, null];
}

function extremesOf(ways: Way[], begin: number, end: number): [number, number] {
    let low = Infinity;
    let high = -Infinity;
    for (const way of ways) {
        const across = blob(way.x);
        const up = blob(way.y);
        for (let i = 0; i < way.count; ++i) {
            const x = across[i] ?? NaN;
            const y = up[i] ?? NaN;
            if (!(x >= begin && x <= end)) continue;
            if (y < low) low = y;
            if (y > high) high = y;
        }
    }
    return [low, high];
}

/** Lines through samples in the order in which they came: a plot's own go from left to right. */
export function drawWay(plot: uPlot, signal: Signal, theme: Theme, hidden: ReadonlySet<number>): void {
    if (signal.ways === null) return;
    const {ctx, bbox} = plot;
    ctx.save();
    ctx.beginPath();
    ctx.rect(bbox.left, bbox.top, bbox.width, bbox.height);
    ctx.clip();
    signal.ways.forEach((way, i) => {
        if (!hidden.has(i)) drawOne(plot, way, theme.curve(i), theme.dash(i));
    });
    ctx.restore();
}

function drawOne(plot: uPlot, way: Way, colour: string, dash: number[]): void {
    const {ctx, bbox} = plot;
    const across = blob(way.x);
    const up = blob(way.y);
    const ratio = devicePixelRatio;
    const line = new Path2D();
    const dots = new Path2D();
    const hasDots = way.count * pixelsForDots * ratio < bbox.width;
    const isBreak = (i: number): boolean => Number.isNaN(up[i] ?? NaN);
    for (let i = 0; i < way.count; ++i) {
        if (isBreak(i)) continue;
        const x = plot.valToPos(across[i] ?? 0, "x", true);
        const y = plot.valToPos(up[i] ?? 0, "y", true);
        if (isBreak(i - 1)) line.moveTo(x, y);
        else line.lineTo(x, y);
        if (!hasDots && !(isBreak(i - 1) && isBreak(i + 1))) continue;
        dots.moveTo(x, y);
        dots.arc(x, y, 2 * ratio, 0, 2 * Math.PI);
    }
    ctx.strokeStyle = ctx.fillStyle = colour;
    ctx.lineWidth = 1.25 * ratio;
    ctx.lineJoin = "round";
    ctx.setLineDash(dash.map((length) => length * ratio));
    ctx.stroke(line);
    ctx.fill(dots);
}
