// SPDX-License-Identifier: MIT

/** The colours of Okabe and Ito, which people tell apart who see colours differently; in an order that reads well. */
const onLight = ["#0072b2", "#d55e00", "#009e73", "#cc79a7", "#b87d00", "#56b4e9", "#000000"];
const onDark = ["#56b4e9", "#e69f00", "#00b386", "#cc79a7", "#f0e442", "#e8743b", "#f2f2f2"];

type Choice = "light" | "dark" | null;

/** Dark and light: as the machine says, unless the reader does; paper is light. */
export class Theme {
    private choice: Choice = null;
    private isPaper = false;
    private readonly listeners: (() => void)[] = [];
    private readonly machine = matchMedia("(prefers-color-scheme: dark)");

    constructor() {
        this.machine.addEventListener("change", () => this.apply());
        addEventListener("beforeprint", () => this.setPaper(true));
        addEventListener("afterprint", () => this.setPaper(false));
        this.apply();
    }

    get isDark(): boolean {
        if (this.isPaper) return false;
        return this.choice === null ? this.machine.matches : this.choice === "dark";
    }
    onChange(listener: () => void): void {
        this.listeners.push(listener);
    }
    toggle(): void {
        this.choice = this.isDark ? "light" : "dark";
        this.apply();
    }
    curve(index: number): string {
        const colours = this.isDark ? onDark : onLight;
        return colours[index % colours.length] ?? "#888888";
    }
    /** Within points: as their rim, or empty beyond as many as there are colours. */
    fill(index: number): string {
        return index < onLight.length ? this.curve(index) : this.text("--card");
    }
    /** Beyond as many curves as there are colours, dashes tell them apart. */
    dash(index: number): number[] {
        return [[], [6, 3], [2, 3], [9, 3, 2, 3]][Math.floor(index / onLight.length) % 4] ?? [];
    }
    text(name: string): string {
        return getComputedStyle(document.documentElement).getPropertyValue(name).trim();
    }

    private setPaper(flag: boolean): void {
        this.isPaper = flag;
        this.apply();
    }
    private apply(): void {
        document.documentElement.dataset["theme"] = this.isDark ? "dark" : "light";
        for (const listener of this.listeners) listener();
    }
}

/**
 * From little to much, as a colour of 0 to 1: lightness grows evenly with it, so that it also reads in grey and to
 * every eye. After Nuñez, Anderton and Renslow's cividis (2018), at seventeen points.
 */
const scale = [
    [0, 34, 78], [0, 45, 104], [24, 56, 110], [47, 66, 108], [63, 76, 108], [77, 87, 109], [91, 98, 111],
    [104, 109, 114], [117, 120, 119], [132, 132, 120], [147, 144, 117], [163, 157, 112], [179, 170, 105],
    [196, 184, 95], [214, 199, 82], [232, 214, 63], [254, 232, 56],
] as const;

export function heat(part: number): [number, number, number] {
    const place = Math.min(1, Math.max(0, part)) * (scale.length - 1);
    const low = scale[Math.floor(place)] ?? scale[0];
    const high = scale[Math.ceil(place)] ?? low;
    const rest = place - Math.floor(place);
    return [0, 1, 2].map((i) => Math.round((low[i] ?? 0) + ((high[i] ?? 0) - (low[i] ?? 0)) * rest)) as
        [number, number, number];
}
