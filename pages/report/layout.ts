// SPDX-License-Identifier: MIT
import type {Block, Graph} from "./model";

/** A block's box, or, without one, a bend of a connection that passes a layer. */
export interface Box {
    block: Block | null;
    layer: number;
    x: number;
    y: number;
    width: number;
    height: number;
    lines: string[];
    inputs: string[];
    outputs: string[];
}

export interface Road {
    from: Box;
    fromPin: string;
    to: Box;
    toPin: string;
    bends: Box[];
    connection: number;
}

export interface Drawing {
    boxes: Box[];
    roads: Road[];
    width: number;
    height: number;
}

const letter = 6.7;
const lineHeight = 15;
export const headHeight = 38;
const between = {layers: 44, boxes: 20};
const mostLines = 6;
const mostLetters = 30;

export function shortened(text: string, most = mostLetters): string {
    return text.length > most ? text.slice(0, most - 1) + "…" : text;
}

function linesOf(block: Block): string[] {
    const given = block.settings.filter((setting) => setting.given);
    const lines = given.map(({name, value}) => {
        // What the graph says in hertz or seconds stands behind the number that was made of it.
        const shown = shortened(/^\S+ \((.+)\)$/.exec(value)?.[1] ?? value, mostLetters - 6);
        return `${shortened(name, Math.max(6, mostLetters - shown.length))}: ${shown}`;
    });
    if (lines.length <= mostLines) return lines;
    return [...lines.slice(0, mostLines - 1), `and ${lines.length - mostLines + 1} more`];
}

function boxOf(block: Block, graph: Graph): Box {
    const used = (pins: string[], side: "from" | "to"): string[] =>
        pins.filter((pin) => graph.connections.some((link) => link[side].block === block.id && link[side].pin === pin));
    const inputs = used(block.inputs, "to");
    const outputs = used(block.outputs, "from");
    const lines = linesOf(block);
    const pinRows = Math.max(inputs.length, outputs.length);
    const widest = Math.max(
        block.id.length * 1.15, block.type.length, ...lines.map((line) => line.length),
        ...Array.from({length: pinRows}, (_, i) =>
            shortened(inputs[i] ?? "", 18).length + shortened(outputs[i] ?? "", 18).length + 4));
    return {
        block, layer: 0, x: 0, y: 0, lines, inputs, outputs,
        width: Math.max(96, widest * letter + 22),
        height: headHeight + (pinRows + lines.length) * lineHeight + (lines.length > 0 ? 12 : 6),
    };
}

/** Where a pin of a box is; a bend has one place. */
export function pinAt(box: Box, pin: string, side: "in" | "out"): {x: number; y: number} {
    const x = side === "in" ? box.x : box.x + box.width;
    if (box.block === null) return {x, y: box.y + box.height / 2};
    const index = (side === "in" ? box.inputs : box.outputs).indexOf(pin);
    return {x, y: box.y + headHeight + (index + 0.5) * lineHeight};
}

/** Connections that don't lead back: what closes a loop is left out, so that layers can be counted. */
function forwardLinks(boxes: Map<string, Box>, graph: Graph): boolean[] {
    const state = new Map<string, "open" | "done">();
    const isForward = graph.connections.map(() => true);
    const visit = (id: string): void => {
        state.set(id, "open");
        graph.connections.forEach((link, i) => {
            if (link.from.block !== id || !boxes.has(link.to.block)) return;
            if (state.get(link.to.block) === "open") isForward[i] = false;
            else if (!state.has(link.to.block)) visit(link.to.block);
        });
        state.set(id, "done");
    };
    for (const id of boxes.keys()) if (!state.has(id)) visit(id);
    return isForward;
}

/** Behind everything that it gets something from. */
function setLayers(boxes: Map<string, Box>, graph: Graph, isForward: boolean[]): void {
    for (let pass = 0; pass < boxes.size; ++pass) {
        let hasMoved = false;
        graph.connections.forEach((link, i) => {
            const from = boxes.get(link.from.block);
            const to = boxes.get(link.to.block);
            if (!isForward[i] || !from || !to || to.layer > from.layer) return;
            to.layer = from.layer + 1;
            hasMoved = true;
        });
        if (!hasMoved) return;
    }
}

/** A bend in every layer that a connection passes. */
function roadsOf(boxes: Map<string, Box>, graph: Graph, bends: Box[]): Road[] {
    const roads: Road[] = [];
    graph.connections.forEach((link, connection) => {
        const from = boxes.get(link.from.block);
        const to = boxes.get(link.to.block);
        if (!from || !to) return;
        const road: Road = {from, to, fromPin: link.from.pin, toPin: link.to.pin, bends: [], connection};
        const way = to.layer > from.layer ? 1 : -1;
        for (let layer = from.layer + way; way * (to.layer - layer) > 0; layer += way)
            road.bends.push({block: null, layer, x: 0, y: 0, width: 0, height: 8, lines: [], inputs: [], outputs: []});
        bends.push(...road.bends);
        roads.push(road);
    });
    return roads;
}

/** Sorts each layer by where the neighbours stand, to and fro, which untangles most of the crossings. */
function sortLayers(layers: Box[][], roads: Road[]): void {
    const chains = roads.map((road) => [road.from, ...road.bends, road.to]);
    const place = new Map<Box, number>();
    const number = (): void => layers.forEach((layer) => layer.forEach((box, i) => place.set(box, i / layer.length)));
    number();
    for (let sweep = 0; sweep < 8; ++sweep) {
        const order = sweep % 2 === 0 ? layers : [...layers].reverse();
        for (const layer of order) {
            const weight = new Map<Box, number>();
            for (const box of layer) {
                const near: number[] = [];
                for (const chain of chains)
                    chain.forEach((stop, i) => {
                        if (stop !== box) return;
                        const other = sweep % 2 === 0 ? chain[i - 1] : chain[i + 1];
                        if (other) near.push(place.get(other) ?? 0);
                    });
                const sum = near.reduce((a, b) => a + b, 0);
                weight.set(box, near.length > 0 ? sum / near.length : place.get(box) ?? 0);
            }
            layer.sort((a, b) => (weight.get(a) ?? 0) - (weight.get(b) ?? 0));
            number();
        }
    }
}

/** Boxes of a layer under each other, every layer in the middle of the height. */
function setPlaces(layers: Box[][]): {width: number; height: number} {
    const heightOf = (layer: Box[]): number =>
        layer.reduce((sum, box) => sum + box.height, 0) + (layer.length - 1) * between.boxes;
    const height = Math.max(...layers.map(heightOf));
    let x = 0;
    for (const layer of layers) {
        const width = Math.max(...layer.map((box) => box.width));
        let y = (height - heightOf(layer)) / 2;
        for (const box of layer) {
            box.x = box.block ? x + (width - box.width) / 2 : x;
            if (!box.block) box.width = width;
            box.y = y;
            y += box.height + between.boxes;
        }
        x += width + between.layers;
    }
    return {width: x - between.layers, height};
}

/** Where everything of a graph stands: senders at the left of receivers, as few crossings as a few sweeps give. */
export function layOut(graph: Graph): Drawing {
    const byId = new Map(graph.blocks.map((block) => [block.id, boxOf(block, graph)]));
    setLayers(byId, graph, forwardLinks(byId, graph));
    const bends: Box[] = [];
    const roads = roadsOf(byId, graph, bends);
    const boxes = [...byId.values()];
    const layers: Box[][] = [];
    for (const box of [...boxes, ...bends]) (layers[box.layer] ??= []).push(box);
    if (layers.length === 0) return {boxes, roads, width: 0, height: 0};
    sortLayers(layers, roads);
    return {boxes, roads, ...setPlaces(layers)};
}
