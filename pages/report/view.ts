// SPDX-License-Identifier: MIT

import {longTime} from "./format";

type Listener = () => void;

/** The part of the run that all panels show, and the time that all of them point at. */
export class View {
    begin: number;
    end: number;
    cursor: number | null = null;
    private readonly listeners: Listener[] = [];
    private readonly cursorListeners: Listener[] = [];
    private isDue = false;

    /** `finest` is the smallest step that there is to see. */
    constructor(readonly first: number, readonly last: number, private readonly finest: number,
        private readonly clock = "s") {
        this.begin = first;
        this.end = last;
    }

    get isWhole(): boolean {
        return this.begin <= this.first && this.end >= this.last;
    }
    /** Whether times read better as hours and minutes. */
    get isLong(): boolean {
        return this.clock === "s" && this.last - this.first > longTime;
    }
    /** Behind a time; hours and minutes need none. */
    get unit(): string {
        return this.isLong ? "" : ` ${this.clock}`;
    }
    /** Above a column of times. */
    get heading(): string {
        return this.clock === "s" ? "seconds" : this.clock;
    }
    get span(): number {
        return this.end - this.begin;
    }

    onChange(listener: Listener): void {
        this.listeners.push(listener);
    }
    onCursor(listener: Listener): void {
        this.cursorListeners.push(listener);
    }

    /** Keeps what is shown within what there is. */
    show(begin: number, end: number): void {
        const whole = this.last - this.first;
        const least = Math.min(whole, Math.max(4 * this.finest, 1e-6));
        let span = Math.min(whole, Math.max(least, end - begin));
        if (span < least || !Number.isFinite(span)) span = least;
        const middle = (begin + end) / 2;
        const from = Math.min(Math.max(this.first, span === end - begin ? begin : middle - span / 2), this.last - span);
        this.begin = from;
        this.end = from + span;
        this.tell();
    }
    showAll(): void {
        this.show(this.first, this.last);
    }
    /** A factor below 1 shows less; `around` stays where it is. */
    zoom(factor: number, around = this.cursor ?? (this.begin + this.end) / 2): void {
        const pivot = around >= this.begin && around <= this.end ? around : (this.begin + this.end) / 2;
        this.show(pivot - (pivot - this.begin) * factor, pivot + (this.end - pivot) * factor);
    }
    /** By a part of what is shown. */
    move(part: number): void {
        const way = part * this.span;
        const most = this.last - this.end;
        const least = this.first - this.begin;
        const taken = Math.min(most, Math.max(least, way));
        this.show(this.begin + taken, this.end + taken);
    }
    point(time: number | null): void {
        this.cursor = time;
        for (const listener of this.cursorListeners) listener();
    }

    /** Once a frame, however often it changes in between. */
    private tell(): void {
        if (this.isDue) return;
        this.isDue = true;
        requestAnimationFrame(() => {
            this.isDue = false;
            for (const listener of this.listeners) listener();
        });
    }
}

/** What the keys do while the signals have the focus; the text of help says the same. */
export function listenToKeys(region: HTMLElement, view: View): void {
    region.addEventListener("keydown", (event) => {
        if (event.ctrlKey || event.metaKey || event.altKey) return;
        const target = event.target as HTMLElement;
        if (target.closest("input, select, textarea, .wide")) return;
        const step = view.span / 100;
        const cursor = view.cursor ?? (view.begin + view.end) / 2;
        const moveCursor = (way: number): void => {
            const next = Math.min(view.last, Math.max(view.first, cursor + way * step));
            if (next < view.begin || next > view.end) view.move(way / 10);
            view.point(next);
        };
        switch (event.key) {
            case "ArrowLeft": event.shiftKey ? moveCursor(-1) : view.move(-0.1); break;
            case "ArrowRight": event.shiftKey ? moveCursor(1) : view.move(0.1); break;
            case "+": case "=": view.zoom(0.5); break;
            case "-": case "_": view.zoom(2); break;
            case "Home": view.move(-Infinity); break;
            case "End": view.move(Infinity); break;
            case "0": case "Escape": view.showAll(); break;
            default: return;
        }
        event.preventDefault();
    });
}
