// SPDX-License-Identifier: MIT
import {counted, digits} from "./format";
import type {Signal} from "./model";

/** What there is to see in a panel. */
export function wordsOf(signal: Signal, clock: string): string {
    if (signal.samples === 0) return "Nothing came.";
    const shown = signal.kind === "map" ? mapWords(signal) : columnWords(signal);
    const extent = `${counted(signal.samples, "sample")} from ${digits(signal.begin)} to ${digits(signal.end)} ${clock}`;
    return `${extent}: ${shown}.${leftOut(signal)}${grain(signal)}`;
}

const unitOf = ({unit}: Signal): string => unit === "" ? "" : ` ${unit}`;

function mapWords(signal: Signal): string {
    const low = Math.min(...signal.columns.map((column) => column.minimum ?? Infinity));
    const high = Math.max(...signal.columns.map((column) => column.maximum ?? -Infinity));
    const {rows} = signal;
    const stand = rows === null ? "" : ` from ${digits(rows.begin)} to ` +
        `${digits(rows.begin + (signal.columns.length - 1) * rows.apart)} ${rows.unit}`;
    return `${counted(signal.columns.length, "element")} each${stand}, from ${digits(low)} to ` +
        `${digits(high)}${unitOf(signal)}`;
}

function columnWords(signal: Signal): string {
    const ranges = signal.columns.slice(0, 6).map((column) => {
        const name = signal.columns.length > 1 ? `${column.name} ` : "";
        const odd = column.notFinite > 0 ? `, ${counted(column.notFinite, "value")} not finite` : "";
        if (column.minimum === null) return `${name}without a finite value${odd}`;
        return `${name}from ${digits(column.minimum)} to ${digits(column.maximum)}${unitOf(signal)}, ` +
            `mean ${digits(column.mean)}${odd}`;
    });
    const more = signal.columns.length > 6 ? [`and ${signal.columns.length - 6} more columns`] : [];
    return [...ranges, ...more].join("; ");
}

function leftOut({leftOut}: Signal): string {
    if (leftOut === 0) return "";
    const are = leftOut === 1 ? "is" : "are";
    return ` ${counted(leftOut, "element")} behind these ${are} not on this page.`;
}

/** How much finer the samples were than what the page holds. */
function grain(signal: Signal): string {
    if (signal.ways !== null) {
        const points = Math.min(...signal.ways.map((way) => way.count));
        // A break takes one point, however many values there were that aren't finite.
        const notFinite = Math.max(...signal.columns.map((column) => column.notFinite));
        return points >= signal.samples - notFinite ? ""
            : ` The way is drawn by ${points.toLocaleString("en")} of them, which stand apart from each other.`;
    }
    if (signal.finest <= 1) return "";
    return " The finest that this page holds is the lowest and the highest value of up to " +
        `${counted(signal.finest, "sample")} at a time.`;
}
