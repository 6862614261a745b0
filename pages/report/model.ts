// SPDX-License-Identifier: MIT
// What the host writes into the page: host/report/ReportJson.cpp makes it, docs/report.md tells of it.

export interface Place {
    file: string | null;
    line: number | null;
    column: number | null;
}

export interface Told extends Place {
    sentence: string;
}

export interface Finding {
    count: number;
    firstRow?: number;
    time?: number;
}

export interface SourceAccount {
    id: string;
    file: string | null;
    rows: number;
    processedRows: number;
    firstTime: number | null;
    lastTime: number | null;
    medianRate: number | null;
    notes: string[];
    repairs: {
        skippedRows: number;
        mendedRows: number;
        missingCells: number;
        cutEndDropped: boolean;
        firstFaults: string[];
    };
    timeRepairs: {
        repeated: Finding;
        backward: Finding;
        behindEnd: Finding;
        gaps: Finding;
        rowsFilled: number;
        gapsLeft: number;
        earlyRows: number;
        resampledRate: number | null;
        resampledRows: number;
    };
    nonFiniteValues: number;
}

export interface SinkAccount {
    id: string;
    file: string | null;
    where: string | null;
    complete: boolean;
    rows: number;
    silentPins: string[];
}

export interface LinkAccount {
    from: string | null;
    to: string;
    received: number;
    taken: number;
    lost: number;
}

export interface Change {
    /** Null before the first round. */
    time: number | null;
    target: string;
    sentence: string;
}

/** As `run --summary-json` writes it; the page reads these members of it. */
export interface Outcome {
    graph: string;
    graphFile: string | null;
    state: "whole" | "failed" | "refused";
    interrupted: boolean;
    failure: string | null;
    rounds: number;
    rows: number;
    streamTime: number | null;
    seconds: number | null;
    sources: SourceAccount[];
    sinks: SinkAccount[];
    links: LinkAccount[];
    conversions: {target: string; sentence: string}[];
    /** Settings that were turned, and commands that were fired, while a live run ran. */
    changes: Change[];
    /** Behind these. */
    changesLeftOut: number;
    doubts: Told[];
    warnings: Told[];
}

export interface Setting {
    name: string;
    value: string;
    given: boolean;
}

export interface Block {
    id: string;
    type: string;
    kind: "source" | "sink" | "block";
    inputs: string[];
    outputs: string[];
    settings: Setting[];
}

export interface End {
    block: string;
    pin: string;
}

export interface Connection {
    from: End;
    to: End;
    buffer: number;
}

export interface TimelineEntry {
    time: number;
    text: string;
}

export interface Graph {
    name: string;
    clock: "wall" | "stream";
    parameters: {name: string; value: string}[];
    blocks: Block[];
    connections: Connection[];
    timeline: TimelineEntry[];
}

/** A signal at one grain: samples themselves, or what was lowest and highest in each bucket of time. */
export interface Level {
    count: number;
    /** Of buckets: seconds at which the first one begins, and that each of them takes; 0 for samples. */
    begin: number;
    step: number;
    /** A blob of times: of samples, or of the begins of buckets; null where one follows the other without a gap. */
    times: string | null;
    /** A blob, one column behind the other; null of samples for `high`. Not-a-number where there is nothing. */
    low: string;
    high: string | null;
}

/** The points of a column, in the order in which they came; not-a-number breaks the line. */
export interface Way {
    count: number;
    /** Blobs. */
    x: string;
    y: string;
}

export interface Column {
    name: string;
    minimum: number | null;
    maximum: number | null;
    mean: number | null;
    notFinite: number;
}

export interface Signal {
    /** `block.pin`, of a sink's input or of an output that is watched. */
    name: string;
    /**
     * `points`: what comes now and then, at its values; `marks`: what does, and has none worth an axis; `way`: what
     * goes to and fro along the axis.
     */
    kind: "curves" | "points" | "marks" | "map" | "way";
    watched: boolean;
    unit: string;
    samples: number;
    begin: number;
    end: number;
    /** Seconds between two samples, as a rule; 0 where there are fewer than two. */
    period: number;
    columns: Column[];
    /** What elements stand for: the first, and how far they are apart; null where they are counted. */
    rows: {begin: number; apart: number; unit: string} | null;
    /** Of a map: which values are darkest and lightest, and how many decibels lie between; null: as they are. */
    shades: {low: number; high: number; decibels: number | null} | null;
    /** Elements behind them, for which there was no room. */
    leftOut: number;
    /** From the coarsest to the finest; none of a way. */
    levels: Level[];
    /** Of a way, for each column; null of anything else. */
    ways: Way[] | null;
    /** How many samples the finest level has in a bucket at most; 1 for the samples themselves. */
    finest: number;
}

/** What is shown without a run. */
export interface Recording {
    file: string;
    rows: number;
    firstTime: number | null;
    lastTime: number | null;
    medianRate: number | null;
    notes: string[];
}

export interface Report {
    document: "report";
    format: 1;
    name: string;
    /** What the axis counts: `s` for seconds, `row`, or the name of a column. */
    clock: string;
    /** The date, or the time of day, that second 0 is; null where nobody says. */
    origin: string | null;
    /** What of recordings there was too much of, as `20 panels`; null: nothing. */
    leftOut: string | null;
    /** Of a page that no run has made; then it has neither an outcome nor a graph. */
    recordings: Recording[];
    outcome: Outcome | null;
    graph: Graph | null;
    signals: Signal[];
    versions: {name: string; version: string}[];
}

const kept = new Map<string, Float64Array | Float32Array>();

/**
 * The numbers of a blob: a script element with a text of `f4` or `f8` and base64, little endian, as every
 * machine is that has a browser. Decoded when they are first asked for, so that opening costs the coarsest alone.
 */
export function blob(id: string): Float64Array | Float32Array {
    const known = kept.get(id);
    if (known) return known;
    const element = document.getElementById(id);
    const text = element?.textContent ?? "";
    const raw = atob(text.slice(2));
    const bytes = new Uint8Array(raw.length);
    for (let i = 0; i < raw.length; ++i) bytes[i] = raw.charCodeAt(i);
    const numbers = text.startsWith("f8") ? new Float64Array(bytes.buffer) : new Float32Array(bytes.buffer);
    kept.set(id, numbers);
    return numbers;
}

export function readReport(): Report {
    return JSON.parse(document.getElementById("report")?.textContent ?? "") as Report;
}

/** The lowest values of a column, and the highest, which of samples are the same. */
export function columnOf(level: Level, column: number): {low: ArrayLike<number>; high: ArrayLike<number>} {
    const part = (id: string): ArrayLike<number> => blob(id).subarray(column * level.count, (column + 1) * level.count);
    const low = part(level.low);
    return {low, high: level.high === null ? low : part(level.high)};
}
