// SPDX-License-Identifier: MIT
import {counted, draw, make, table} from "./format";
import {headHeight, layOut, pinAt, shortened, type Box, type Road} from "./layout";
import type {Block, End, Graph, LinkAccount, Report} from "./model";

const margin = 12;
const leastScale = 0.6;

function nameOf(end: End): string {
    return `${end.block}.${end.pin}`;
}

function drawBox(box: Box, block: Block, watched: Set<string>): SVGElement {
    const whole = draw("g", {class: `box ${block.kind}`, transform: `translate(${box.x} ${box.y})`});
    whole.append(
        draw("rect", {width: box.width, height: box.height, rx: 7}),
        draw("text", {x: 11, y: 17, class: "id"}, block.id),
        draw("text", {x: 11, y: 31, class: "type"}, block.type));
    const pin = (name: string, i: number, side: "in" | "out"): void => {
        const x = side === "in" ? 0 : box.width;
        const y = headHeight + (i + 0.5) * 15;
        const isWatched = side === "out" && watched.has(`${block.id}.${name}`);
        whole.append(
            draw("circle", {cx: x, cy: y, r: isWatched ? 5 : 3.5, class: isWatched ? "pin watched" : "pin"},
                draw("title", {}, name + (isWatched ? ", watched" : ""))),
            draw("text", {x: side === "in" ? 9 : box.width - 9, y: y + 4, class: `pin-name ${side}`}, shortened(name, 18)));
    };
    box.inputs.forEach((name, i) => pin(name, i, "in"));
    box.outputs.forEach((name, i) => pin(name, i, "out"));
    const top = headHeight + Math.max(box.inputs.length, box.outputs.length) * 15 + 14;
    box.lines.forEach((line, i) => whole.append(draw("text", {x: 11, y: top + i * 15, class: "setting"}, line)));
    return whole;
}

/** A curve from pin to pin, by the bends; what leads back goes below its boxes. */
function pathOf(road: Road): string {
    const start = pinAt(road.from, road.fromPin, "out");
    const end = pinAt(road.to, road.toPin, "in");
    const isBack = road.to.layer <= road.from.layer;
    const stops = isBack
        ? [start, {x: start.x + 20, y: Math.max(road.from.y + road.from.height, road.to.y + road.to.height) + 12},
            {x: end.x - 20, y: Math.max(road.from.y + road.from.height, road.to.y + road.to.height) + 12}, end]
        : [start, ...road.bends.flatMap((bend) => [pinAt(bend, "", "in"), pinAt(bend, "", "out")]), end];
    let path = `M${start.x} ${start.y}`;
    for (let i = 1; i < stops.length; ++i) {
        const from = stops[i - 1] ?? start;
        const to = stops[i] ?? end;
        const bow = isBack ? 10 : (to.x - from.x) / 2;
        path += `C${from.x + bow} ${from.y} ${to.x - bow} ${to.y} ${to.x} ${to.y}`;
    }
    return path;
}

function drawRoad(road: Road, graph: Graph, accounts: Map<string, LinkAccount>): SVGElement {
    const link = graph.connections[road.connection];
    const account = link ? accounts.get(nameOf(link.to)) : undefined;
    const isLossy = (account?.lost ?? 0) > 0;
    const words = link ? `${nameOf(link.from)} to ${nameOf(link.to)}` : "";
    const counts = account
        ? `: ${counted(account.received, "sample")}${isLossy ? `, ${account.lost.toLocaleString("en")} lost` : ""}` : "";
    return draw("path", {d: pathOf(road), class: isLossy ? "link lossy" : "link"}, draw("title", {}, words + counts));
}

function connectionTable(graph: Graph, accounts: Map<string, LinkAccount>): HTMLElement {
    return table("connections", ["from", "to", "buffer", "samples", "lost"], graph.connections.map((link) => {
        const account = accounts.get(nameOf(link.to));
        return [nameOf(link.from), nameOf(link.to), String(link.buffer), account?.received.toLocaleString("en") ?? "0",
            account?.lost.toLocaleString("en") ?? "0"];
    }), [2, 3, 4]);
}

/** The graph as a picture, and its connections as a table for who can't see it; nothing where there is none. */
export function graphSections(report: Report): HTMLElement[] {
    const {graph} = report;
    if (graph === null) return [];
    const watched = new Set(report.signals.filter((signal) => signal.watched).map((signal) => signal.name));
    const accounts = new Map((report.outcome?.links ?? []).map((link) => [link.to, link]));
    const drawing = layOut(graph);
    const width = drawing.width + 2 * margin;
    const height = drawing.height + 2 * margin + (drawing.roads.some((road) => road.to.layer <= road.from.layer) ? 16 : 0);
    const picture = draw("svg", {
        viewBox: `${-margin} ${-margin} ${width} ${height}`, width, height, role: "img", "aria-labelledby": "graph-title",
    });
    // Drawn smaller where the page is narrow, but not so small that it can't be read: then it is moved.
    picture.style.minWidth = `${Math.round(leastScale * width)}px`;
    picture.append(draw("title", {id: "graph-title"},
        `The graph: ${counted(graph.blocks.length, "block")} and ${counted(graph.connections.length, "connection")}; ` +
        "the table of connections says the same in words."));
    picture.append(...drawing.roads.map((road) => drawRoad(road, graph, accounts)));
    for (const box of drawing.boxes) if (box.block) picture.append(drawBox(box, box.block, watched));
    return [make("section", {id: "graph", "aria-labelledby": "graph-head"},
        make("h2", {id: "graph-head"}, "Graph"),
        make("div", {class: "drawing", tabindex: 0, role: "region", "aria-label": "drawing of the graph"}, picture),
        make("details", {}, make("summary", {}, "Connections as a table"), connectionTable(graph, accounts)))];
}
