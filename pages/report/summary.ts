// SPDX-License-Identifier: MIT
import {counted, digits, make, table} from "./format";
import type {Finding, Graph, Outcome, Report, SourceAccount, Told} from "./model";

function list(items: (Node | string)[]): HTMLElement {
    return make("ul", {}, ...items.map((item) => make("li", {}, item)));
}

function found(finding: Finding, what: (count: number) => string): string[] {
    if (finding.count === 0) return [];
    const first = finding.time === undefined ? "" : `, the first at ${digits(finding.time)} s`;
    return [what(finding.count) + first];
}

/** What was done to a recording on the way in. */
function repairsOf(source: SourceAccount): string[] {
    const {repairs, timeRepairs: times} = source;
    const rows = (count: number): string => counted(count, "row");
    return [
        ...(repairs.skippedRows > 0 ? [`${rows(repairs.skippedRows)} skipped`] : []),
        ...(repairs.mendedRows > 0 ? [`${rows(repairs.mendedRows)} mended`] : []),
        ...(repairs.missingCells > 0 ? [`${counted(repairs.missingCells, "cell")} missing, as declared`] : []),
        ...(repairs.cutEndDropped ? ["a last line without an end left out"] : []),
        ...repairs.firstFaults,
        ...found(times.repeated, (count) => `${rows(count)} left out whose time repeats`),
        ...found(times.backward, (count) => `${rows(count)} left out whose time goes back`),
        ...found(times.behindEnd, (count) => `${rows(count)} left out behind the end`),
        ...found(times.gaps, (count) => counted(count, "gap")),
        ...(times.rowsFilled > 0 ? [`${rows(times.rowsFilled)} made to fill gaps`] : []),
        ...(times.gapsLeft > 0 ? [`${counted(times.gapsLeft, "gap")} left as it was`] : []),
        ...(times.earlyRows > 0 ? [`${rows(times.earlyRows)} made in front of the first`] : []),
        ...(times.resampledRate !== null
            ? [`${rows(times.resampledRows)} brought to an even ${digits(times.resampledRate)} rows/s`] : []),
        ...(source.nonFiniteValues > 0 ? [`${counted(source.nonFiniteValues, "value")} read that aren't finite`] : []),
    ];
}

function told(warning: Told): HTMLElement {
    return make("span", {}, warning.sentence);
}

function state(outcome: Outcome): HTMLElement {
    const words = outcome.interrupted ? "interrupted" : outcome.state;
    return make("span", {class: `state ${outcome.state}`}, words);
}

function sources(outcome: Outcome): HTMLElement[] {
    if (outcome.sources.length === 0) return [];
    return [table("recordings", ["source", "file", "rows", "seconds", "rows/s"], outcome.sources.map((source) => {
        const isTimed = source.firstTime !== null && source.lastTime !== null;
        const rows = source.rows.toLocaleString("en") +
            (source.processedRows < source.rows ? `, ${source.processedRows.toLocaleString("en")} processed` : "");
        return [source.id, source.file === "-" ? "standard input" : source.file ?? "–", rows,
            isTimed ? digits((source.lastTime ?? 0) - (source.firstTime ?? 0)) : "–", digits(source.medianRate)];
    }), [2, 3, 4])];
}

function sinks(outcome: Outcome): HTMLElement[] {
    if (outcome.sinks.length === 0) return [];
    return [table("results", ["sink", "file", "rows", "state"], outcome.sinks.map((sink) => [
        sink.id, sink.where === "-" ? "standard output" : sink.where ?? "–", sink.rows.toLocaleString("en"),
        sink.complete ? "whole" : "not whole",
    ]), [2])];
}

/** A heading and its lines, or nothing where there are none. */
function part(id: string, head: string, items: (Node | string)[], kind = ""): HTMLElement[] {
    if (items.length === 0) return [];
    return [make("section", {id, class: `told ${kind}`, "aria-labelledby": `${id}-head`},
        make("h2", {id: `${id}-head`}, head), list(items))];
}

function factsOf(outcome: Outcome): string[] {
    const speed = outcome.seconds === null ? "" : ` in ${digits(Number(outcome.seconds.toPrecision(3)))} s`;
    const work = outcome.sources.length > 0 ? counted(outcome.rows, "row") : counted(outcome.rounds, "round");
    return [
        `${work}${speed}`,
        ...(outcome.streamTime === null ? [] : [`up to ${digits(outcome.streamTime)} s of the stream`]),
        ...(outcome.graphFile === null ? [] : [outcome.graphFile]),
    ];
}

export function header(report: Report): HTMLElement {
    const {outcome, recordings} = report;
    const facts = outcome === null
        ? [counted(recordings.reduce((rows, recording) => rows + recording.rows, 0), "row"), "drawn as they were read"]
        : factsOf(outcome);
    return make("div", {class: "head"},
        make("h1", {}, report.name, ...(outcome === null ? [] : [" ", state(outcome)])),
        make("p", {class: "facts"}, facts.join(" · ")));
}

const named = (id: string, texts: string[]): string[] => texts.map((text) => `${id}: ${text}`);

/** Of a page without a run: what was drawn, and what was mended and left out on the way. */
function recordingSections({recordings, clock, leftOut}: Report): HTMLElement[] {
    const name = (file: string): string => file === "-" ? "standard input" : file;
    const isTimed = clock === "s";
    const rows = recordings.map((recording) => [name(recording.file), recording.rows.toLocaleString("en"),
        isTimed && recording.firstTime !== null && recording.lastTime !== null
            ? digits(recording.lastTime - recording.firstTime) : "–",
        isTimed ? digits(recording.medianRate) : "–"]);
    return [
        make("section", {id: "summary", "aria-labelledby": "summary-head"},
            make("h2", {id: "summary-head"}, "What is drawn"),
            table("recordings", ["file", "rows", "seconds", "rows/s"], rows, [1, 2, 3])),
        ...part("repairs", "Found out, mended and left out", [
            ...recordings.flatMap((recording) => named(name(recording.file), recording.notes)),
            ...(leftOut === null ? [] : [`${leftOut} too many, which aren't on this page`]),
        ]),
    ];
}

export function summarySections(report: Report): HTMLElement[] {
    return report.outcome === null ? recordingSections(report) : outcomeSections(report.outcome);
}

function outcomeSections(outcome: Outcome): HTMLElement[] {
    const repairs = outcome.sources.flatMap((source) => named(source.id, repairsOf(source)));
    const conversions = [
        ...outcome.sources.flatMap((source) => named(source.id, source.notes)),
        ...outcome.conversions.map(({target, sentence}) => `${target}: ${sentence}`),
    ];
    const losses = [
        ...outcome.links.filter((link) => link.lost > 0).map((link) =>
            `${link.from ?? "others"} to ${link.to}: ${link.lost.toLocaleString("en")} of ` +
            `${counted(link.received, "sample")} lost`),
        ...outcome.sinks.flatMap((sink) => named(sink.id, sink.silentPins.map((pin) => `nothing to ${pin}`))),
    ];
    return [
        ...part("failure", outcome.interrupted ? "Interrupted" : "Failed",
            outcome.failure === null ? [] : [outcome.failure], "failure"),
        ...part("warnings", "Warnings", [...outcome.doubts, ...outcome.warnings].map(told), "warnings"),
        make("section", {id: "summary", "aria-labelledby": "summary-head"},
            make("h2", {id: "summary-head"}, "What came in and out"), ...sources(outcome), ...sinks(outcome)),
        ...part("repairs", "Repairs", repairs),
        ...part("conversions", "Conversions and what was found out", conversions),
        ...part("losses", "Losses", losses),
        ...changeSection(outcome),
    ];
}

/** What the settings at the end of the page don't tell, which are those of the begin. */
function changeSection({changes, changesLeftOut}: Outcome): HTMLElement[] {
    if (changes.length === 0) return [];
    const rows = changes.map(({time, sentence}) => [time === null ? "before the first row" : digits(time), sentence]);
    const more = changesLeftOut === 0 ? [] : [make("p", {}, `And ${counted(changesLeftOut, "more change")} behind these.`)];
    return [make("section", {id: "changes", "aria-labelledby": "changes-head"},
        make("h2", {id: "changes-head"}, "Turned while it ran"),
        table("changes", ["seconds", "what happened"], rows), ...more)];
}

/** What it was made with: at the end, for who wants to do it again. */
export function settingSections(report: Report): HTMLElement[] {
    return [...(report.graph === null ? [] : [settingSection(report.graph)]), versionSection(report)];
}

function settingSection(graph: Graph): HTMLElement {
    const blocks = graph.blocks.filter((block) => block.settings.length > 0).map((block) =>
        make("details", {}, make("summary", {}, `${block.id} (${block.type})`),
            table(`settings of ${block.id}`, ["setting", "value", "given by"], block.settings.map((setting) =>
                [setting.name, setting.value, setting.given ? "the graph" : "the block"]))));
    return make("section", {id: "settings", "aria-labelledby": "settings-head"},
        make("h2", {id: "settings-head"}, "Settings"),
        ...(graph.parameters.length > 0 ? [table("parameters", ["parameter", "value"],
            graph.parameters.map(({name, value}) => [name, value]))] : []),
        ...blocks,
        ...(graph.timeline.length > 0 ? [table("timeline", ["seconds", "what happens"],
            graph.timeline.map(({time, text}) => [digits(time), text]))] : []));
}

function versionSection(report: Report): HTMLElement {
    return make("section", {id: "versions", "aria-labelledby": "versions-head"},
        make("h2", {id: "versions-head"}, "Versions"),
        table("made with", ["part", "version"], report.versions.map(({name, version}) => [name, version])));
}
