// SPDX-License-Identifier: MIT
import {counted, digits, make, table} from "./format";
import {rangeOf, timeOf} from "./levels";
import {blob, columnOf, type Signal, type Way} from "./model";
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
        if (this.signal.ways === null) this.showLevel();
        else this.body.replaceChildren(...this.tablesOfWays(this.signal.ways));
    }

    /** As the samples came. Columns that break at the same places share a table. */
    private tablesOfWays(ways: Way[]): HTMLElement[] {
        const {signal, view} = this;
        const columns = ways.slice(0, mostColumns).map((way, i) => ({way, name: signal.columns[i]?.name ?? ""}));
        return [...new Set(columns.map(({way}) => way.x))].map((x) => {
            const shared = columns.filter(({way}) => way.x === x);
            const rows: string[][] = [];
            let inView = 0;
            blob(x).forEach((value, i) => {
                const values = shared.map(({way}) => blob(way.y)[i] ?? NaN);
                if (!(value >= view.begin && value <= view.end) || values.every(Number.isNaN)) return;
                if (++inView <= mostRows) rows.push([digits(value), ...values.map((each) => digits(each))]);
            });
            return this.tableOf(inView, "sample", shared.map(({name}) => name), rows);
        });
    }

    private tableOf(inView: number, kind: string, names: string[], rows: string[][]): HTMLElement {
        const caption = inView > mostRows
            ? `the first ${mostRows} of ${counted(inView, kind)} in view; zoom in for the others`
            : `the ${counted(inView, kind)} in view`;
        return table(`${this.signal.name}, ${caption}`, [this.view.heading, ...names], rows,
            [...names.keys()].map((i) => i + 1));
    }

    private showLevel(): void {
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
        this.body.replaceChildren(this.tableOf(to - from, level.step > 0 ? "bucket" : "sample", names, rows));
    }
}
