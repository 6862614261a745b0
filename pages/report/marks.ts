// SPDX-License-Identifier: MIT
import type uPlot from "uplot";
import {digits} from "./format";
import {lowerBound} from "./levels";
import {blob, columnOf, type Report, type Signal} from "./model";
import type {Theme} from "./theme";

/** More marks than pixels are a bar, and no name can be read beside them. */
const mostNames = 40;

/** When the timeline does something, or somebody has done it by hand. */
function timesOfChanges({graph, outcome}: Report): number[] {
    const byHand = (outcome?.changes ?? []).flatMap(({time}) => time === null ? [] : [time]);
    return [...new Set([...(graph?.timeline ?? []).map(({time}) => time), ...byHand])];
}

/** What was changed while it ran, in every panel: a dashed line at its time. */
function drawChanges(plot: uPlot, report: Report, theme: Theme): void {
    const {ctx, bbox} = plot;
    ctx.save();
    ctx.strokeStyle = theme.text("--faint");
    ctx.setLineDash([3, 4]);
    ctx.lineWidth = devicePixelRatio;
    for (const time of timesOfChanges(report)) {
        const x = Math.round(plot.valToPos(time, "x", true));
        if (x < bbox.left || x > bbox.left + bbox.width) continue;
        ctx.beginPath();
        ctx.moveTo(x, bbox.top);
        ctx.lineTo(x, bbox.top + bbox.height);
        ctx.stroke();
    }
    ctx.restore();
}

/** Events, which hold nothing but that they are: a stem at the time of each, with what was sent. */
export function drawMarks(plot: uPlot, signal: Signal, report: Report, theme: Theme): void {
    drawChanges(plot, report, theme);
    const level = signal.levels.at(-1);
    if (signal.kind !== "marks" || level?.times == null) return;
    const {ctx, bbox} = plot;
    const times = blob(level.times);
    const from = lowerBound(times, plot.scales["x"]?.min ?? 0);
    const to = lowerBound(times, (plot.scales["x"]?.max ?? 0) + 1e-12);
    const columns = signal.columns.map((_, c) => columnOf(level, c).low);
    const ratio = devicePixelRatio;
    ctx.save();
    ctx.strokeStyle = theme.curve(0);
    ctx.fillStyle = theme.curve(0);
    ctx.lineWidth = 1.5 * ratio;
    ctx.font = `${11 * ratio}px system-ui, sans-serif`;
    let free = -Infinity; // where the next name may begin
    for (let i = from; i < to; ++i) {
        const x = Math.round(plot.valToPos(times[i] ?? 0, "x", true));
        const foot = bbox.top + bbox.height;
        const top = bbox.top + 26 * ratio;
        ctx.beginPath();
        ctx.moveTo(x, foot);
        ctx.lineTo(x, top);
        ctx.stroke();
        ctx.beginPath();
        ctx.arc(x, top, 3.5 * ratio, 0, 2 * Math.PI);
        ctx.fill();
        const name = columns.map((column) => digits(column[i])).join(", ");
        if (to - from > mostNames || x - ctx.measureText(name).width / 2 < free) continue;
        ctx.save();
        ctx.fillStyle = theme.text("--text");
        const half = ctx.measureText(name).width / 2;
        ctx.textAlign = "center";
        ctx.textBaseline = "alphabetic";
        ctx.fillText(name, x, top - 8 * ratio);
        free = x + half + 8 * ratio;
        ctx.restore();
    }
    ctx.restore();
}
