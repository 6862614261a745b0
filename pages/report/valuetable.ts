// SPDX-License-Identifier: MIT
import {counted, digits, make, table} from "./format";
import {rangeOf, timeOf} from "./levels";
import {columnOf, type Signal} from "./model";
import type {View} from "./view";

const mostRows = 200;
const mostColumns = 24;

/** What the panel shows as numbers: of the finest that there is, the first rows of the part that is in view. */
export class ValueTable {
    readonly element: HTMLDetailsElement;
    private readonly body = make("div");

    constructor(private readonly signal: Signal, private readonly view: View) {
        this.element = make("details", {class: "values"}, make("summary", {}, "Values as a table"), this.body);
        this.element.addEventListener("toggle", () => this.update());
    }

    update(): void {
        if (!this.element.open) return;
        const {signal, view} = this;
        const level = signal.levels.at(-1);
        if (level === undefined) {
            this.body.replaceChildren("Nothing came.");
            return;
        }
        let [from, to] = rangeOf(level, view.begin, view.end);
        while (from < to && timeOf(level, from) + level.step < view.begin) ++from;
        while (to > from && timeOf(level, to - 1) > view.end) --to;
        const names = signal.columns.slice(0, mostColumns).map((column) => column.name);
        const columns = names.map((_, c) => columnOf(level, c));
        const rows: string[][] = [];
        for (let i = from; i < to && rows.length < mostRows; ++i) {
            const cells = columns.map(({low, high}) => {
                const least = digits(low[i]);
                const most = digits(high[i]);
                return least === most ? least : `${least} to ${most}`;
            });
            rows.push([digits(timeOf(level, i)), ...cells]);
        }
        const kind = level.step > 0 ? "buckets" : "samples";
        const caption = to - from > mostRows
            ? `the first ${mostRows} of ${counted(to - from, kind.slice(0, -1))} in view; zoom in for the others`
            : `the ${counted(to - from, kind.slice(0, -1))} in view`;
        this.body.replaceChildren(table(`${signal.name}, ${caption}`, [view.heading, ...names], rows,
            [...names.keys()].map((i) => i + 1)));
    }
}
