// SPDX-License-Identifier: MIT
// Opens reports of runs in Chromium, as their readers do. scripts/checks/pages makes the folder of reports that
// REPORTS names, and calls this.
import assert from "node:assert/strict";
import {createRequire} from "node:module";
import {readdirSync, readFileSync, statSync, writeFileSync} from "node:fs";
import {join} from "node:path";
import {after, before, beforeEach, describe, test} from "node:test";
import {pathToFileURL} from "node:url";

const require = createRequire(new URL("../../pages/package.json", import.meta.url));
const {chromium} = require("playwright-core");
const axe = readFileSync(require.resolve("axe-core/axe.min.js"), "utf8");
const folder = process.env.REPORTS;
const reports = readdirSync(folder).filter((name) => name.endsWith(".html"));

let browser;
before(async () => {
    // Without a sandbox, which root has none of; what is opened are files of ours.
    browser = await chromium.launch({executablePath: process.env.CHROMIUM ?? "/usr/bin/chromium", args: ["--no-sandbox"]});
});
after(() => browser.close());

/** An open report, and everything that it complained of or asked for. */
async function open(name, colorScheme = "light") {
    const page = await browser.newPage({viewport: {width: 1200, height: 900}, colorScheme});
    const odd = [];
    page.on("console", (message) => odd.push(`${message.type()}: ${message.text()}`));
    page.on("pageerror", (error) => odd.push(String(error)));
    page.on("request", (request) => {
        if (!/^(file|data):/.test(request.url())) odd.push(`asked for ${request.url()}`);
    });
    await page.goto(pathToFileURL(join(folder, name)).href);
    await page.waitForSelector("#versions");
    return {page, odd};
}

/** Brings a panel into view, and waits until it is drawn. */
async function show(page, panel) {
    await panel.scrollIntoViewIfNeeded();
    await panel.locator("canvas").waitFor();
    await settled(page);
}

function settled(page) {
    return page.evaluate(() => new Promise((done) => {
        requestAnimationFrame(() => requestAnimationFrame(() => setTimeout(done, 30)));
    }));
}

/** How many pixels of a panel have a colour, which grids, axes and paper haven't. */
function colourful(panel) {
    return panel.locator("canvas").evaluate((canvas) => {
        // Of a copy: a browser complains of a canvas that is drawn and read again and again.
        const copy = new OffscreenCanvas(canvas.width, canvas.height).getContext("2d", {willReadFrequently: true});
        copy.drawImage(canvas, 0, 0);
        const {data} = copy.getImageData(0, 0, canvas.width, canvas.height);
        let count = 0;
        for (let i = 0; i < data.length; i += 4) {
            const most = Math.max(data[i], data[i + 1], data[i + 2]);
            const least = Math.min(data[i], data[i + 1], data[i + 2]);
            if (data[i + 3] > 128 && most - least > 60) ++count;
        }
        return count;
    });
}

/** What all panels show, in seconds. */
async function range(page) {
    await settled(page);
    const text = await page.locator(".range").textContent();
    return text.replace(" s", "").split(" to ").map(Number);
}

for (const name of reports) {
    describe(name, () => {
        for (const scheme of ["light", "dark"]) {
            test(`opens in ${scheme}, draws every signal, and axe finds nothing serious`, async () => {
                const {page, odd} = await open(name, scheme);
                const report = JSON.parse(await page.locator("#report").textContent());
                assert.equal(await page.locator("html").getAttribute("data-theme"), scheme);
                assert.equal(await page.locator("h1").textContent(),
                    report.outcome ? `${report.name} ${report.outcome.state}` : report.name);
                assert.equal(await page.locator("#graph .box").count(), report.graph?.blocks.length ?? 0);
                assert.equal(await page.locator("#graph .link").count(), report.graph?.connections.length ?? 0);
                assert.equal(await page.locator(".panel").count(), report.signals.length);
                for (const [i, signal] of report.signals.entries()) {
                    const panel = page.locator(`#signal-${i}`);
                    await show(page, panel);
                    assert.equal(await panel.locator("h3").textContent(), signal.name);
                    const pixels = await colourful(panel);
                    if (signal.samples > 0) assert.ok(pixels > 30, `${signal.name}: ${pixels} pixels`);
                    else assert.equal(pixels, 0, signal.name);
                }
                await page.addScriptTag({content: axe});
                const {violations} = await page.evaluate(() => globalThis.axe.run());
                const serious = violations.filter(({impact}) => impact === "serious" || impact === "critical");
                assert.deepEqual(serious.map(({id, nodes}) => `${id}: ${nodes[0].html}`), []);
                assert.deepEqual(odd, []);
                await page.close();
            });
        }
    });
}

describe("a panel", () => {
    let page;
    let odd;
    let over;
    before(async () => {
        ({page, odd} = await open("rest-tremor.html"));
        await show(page, page.locator("#signal-1"));
        await show(page, page.locator("#signal-0"));
    });
    beforeEach(async () => { // what takes the focus scrolls, and so does a wheel
        await page.locator("#signal-0 .plot").scrollIntoViewIfNeeded();
        await settled(page);
        over = await page.locator("#signal-0 .u-over").boundingBox();
    });
    after(async () => {
        assert.deepEqual(odd, []);
        await page.close();
    });
    const at = (part) => over.x + part * over.width;
    const middle = () => over.y + over.height / 2;
    const picture = (index) => page.locator(`#signal-${index} canvas`).evaluate((canvas) => canvas.toDataURL());

    test("zooms into what is dragged over, and a double click shows everything", async () => {
        const whole = await range(page);
        const before = await picture(1);
        await page.mouse.move(at(0.25), middle());
        await page.mouse.down();
        await page.mouse.move(at(0.5), middle(), {steps: 4});
        await page.mouse.up();
        const part = await range(page);
        const length = whole[1] - whole[0];
        assert.ok(Math.abs(part[0] - whole[0] - 0.25 * length) < 0.02 * length, part.join());
        assert.ok(Math.abs(part[1] - whole[0] - 0.5 * length) < 0.02 * length, part.join());
        assert.notEqual(await picture(1), before, "the other panel shows the same part");
        assert.ok(await colourful(page.locator("#signal-0")) > 100);
        await page.mouse.dblclick(at(0.5), middle());
        assert.deepEqual(await range(page), whole);
    });

    test("zooms by the wheel about the pointer", async () => {
        const whole = await range(page);
        await page.mouse.move(at(0.75), middle());
        await page.mouse.wheel(0, -300);
        const part = await range(page);
        const pivot = whole[0] + 0.75 * (whole[1] - whole[0]);
        assert.ok(part[1] - part[0] < 0.7 * (whole[1] - whole[0]), part.join());
        assert.ok(Math.abs((pivot - part[0]) / (part[1] - part[0]) - 0.75) < 0.02, "which stays where it is");
        await page.mouse.wheel(0, 1000);
        assert.deepEqual(await range(page), whole);
    });

    test("zooms and moves by keys", async () => {
        const whole = await range(page);
        const length = whole[1] - whole[0];
        await page.mouse.move(5, 5);
        await page.locator("#signal-0").focus();
        const press = async (key) => {
            await page.keyboard.press(key);
            return range(page);
        };
        const near = (got, begin, end) => assert.ok(
            Math.abs(got[0] - begin) < 0.02 * length && Math.abs(got[1] - end) < 0.02 * length, `${got}: ${begin}, ${end}`);
        near(await press("+"), whole[0] + length / 4, whole[1] - length / 4);
        near(await press("Home"), whole[0], whole[0] + length / 2);
        near(await press("ArrowRight"), whole[0] + length / 20, whole[0] + 0.55 * length);
        near(await press("End"), whole[0] + length / 2, whole[1]);
        near(await press("ArrowLeft"), whole[0] + 0.45 * length, whole[0] + 0.95 * length);
        near(await press("-"), ...whole);
        await press("+");
        assert.deepEqual(await press("0"), whole);
    });

    test("shares its cursor, by mouse and by keys", async () => {
        const time = page.locator("#signal-1 .cursor-time");
        const line = page.locator("#signal-1 .u-cursor-x");
        await page.mouse.move(at(0.5), middle());
        await settled(page);
        const pointed = await time.textContent();
        assert.match(pointed, /^at \d+\.\d+ s$/);
        assert.ok(Math.abs((await line.boundingBox()).x - at(0.5)) < 3, "the line stands below the pointer");
        assert.match(await page.locator("#signal-1 .reading").first().textContent(), /^0\.\d+$/);
        await page.mouse.move(5, 5);
        await page.locator("#signal-0").focus();
        await page.keyboard.press("Shift+ArrowRight");
        await settled(page);
        assert.notEqual(await time.textContent(), pointed);
        assert.notEqual(await time.textContent(), "");
    });

    test("has its values as a table, of the part that is in view", async () => {
        const panel = page.locator("#signal-0");
        await panel.locator(".values summary").click();
        const rows = panel.locator(".values tbody tr");
        await rows.first().waitFor();
        assert.equal(await rows.count(), 200);
        assert.equal(await rows.first().locator("th").textContent(), "0");
        await panel.focus();
        for (let i = 0; i < 6; ++i) await page.keyboard.press("+");
        await settled(page);
        const count = await rows.count();
        assert.ok(count > 5 && count < 60, `${count} rows`);
        const [begin, end] = await range(page);
        const first = Number(await rows.first().locator("th").textContent());
        assert.ok(first >= begin - 0.02 && first <= end, `${first}`);
        await page.keyboard.press("0");
        await panel.locator(".values summary").click();
    });

    test("hides a curve and shows it again", async () => {
        const panel = page.locator("#signal-0");
        const pixels = await colourful(panel);
        const button = panel.locator(".legend button").first();
        await button.click();
        await settled(page);
        assert.equal(await button.getAttribute("aria-pressed"), "false");
        assert.ok(await colourful(panel) < pixels / 10);
        await button.click();
        await settled(page);
        assert.equal(await colourful(panel), pixels);
    });

    test("is drawn again in the other colours", async () => {
        const before = await picture(0);
        await page.getByRole("button", {name: "dark or light"}).click();
        await settled(page);
        assert.equal(await page.locator("html").getAttribute("data-theme"), "dark");
        assert.notEqual(await picture(0), before);
        assert.ok(await colourful(page.locator("#signal-0")) > 100);
        await page.getByRole("button", {name: "dark or light"}).click();
    });
});

test("labels of an axis say where its ticks stand, and differ", async () => {
    const page = await browser.newPage({viewport: {width: 1200, height: 900}});
    await page.addInitScript(() => {
        globalThis.labels = [];
        const write = CanvasRenderingContext2D.prototype.fillText;
        CanvasRenderingContext2D.prototype.fillText = function fillText(text, x, y, ...more) {
            globalThis.labels.push({text, x, y, isTime: this.textAlign === "center"});
            write.call(this, text, x, y, ...more);
        };
    });
    await page.goto(pathToFileURL(join(folder, "ripple.html")).href);
    await show(page, page.locator("#signal-0"));
    const labels = await page.evaluate(() => globalThis.labels);
    const distinct = (list) => new Map(list.map((label) => [`${label.x} ${label.y}`, label.text]));
    const times = [...distinct(labels.filter(({isTime}) => isTime)).values()].map(Number);
    assert.ok(times.includes(7.5), times.join());
    times.forEach((time, i) => assert.equal(time, 2.5 * i, times.join()));
    const values = [...distinct(labels.filter(({isTime}) => !isTime)).values()];
    assert.ok(values.length > 2, values.join());
    assert.equal(new Set(values).size, values.length, values.join());
    assert.equal(values[0], "≈1.41421");
    assert.match(values[1], /^\+[125]e-9$/);
    await page.close();
});

/** Where the pixels of a colour are in a panel's plot, as parts of its width and of its height from below. */
async function placesOf(panel, colour) {
    const over = await panel.locator(".u-over").boundingBox();
    const whole = await panel.locator("canvas").boundingBox();
    return panel.locator("canvas").evaluate((canvas, [left, top, width, height, wanted]) => {
        const copy = new OffscreenCanvas(canvas.width, canvas.height).getContext("2d", {willReadFrequently: true});
        copy.drawImage(canvas, 0, 0);
        const {data} = copy.getImageData(left, top, width, height);
        const places = [];
        for (let i = 0; i < data.length; i += 4)
            if (wanted.every((part, k) => Math.abs(data[i + k] - part) < 12))
                places.push({x: i / 4 % width / width, y: 1 - Math.floor(i / 4 / width) / height});
        return places;
    }, [over.x - whole.x, over.y - whole.y, over.width, over.height].map(Math.round).concat([colour]));
}

const firstColour = [0x00, 0x72, 0xb2];

test("what comes now and then stands at its values beside an axis, and only events are marks", async () => {
    const page = await browser.newPage({viewport: {width: 1200, height: 900}});
    await page.addInitScript(() => {
        globalThis.labels = [];
        const write = CanvasRenderingContext2D.prototype.fillText;
        CanvasRenderingContext2D.prototype.fillText = function fillText(text, ...more) {
            globalThis.labels.push({text, canvas: this.canvas, isTime: this.textAlign === "center"});
            write.call(this, text, ...more);
        };
    });
    await page.goto(pathToFileURL(join(folder, "beats.html")).href);
    const {signals} = JSON.parse(await page.locator("#report").textContent());
    assert.deepEqual(signals.map(({name, kind}) => `${name} ${kind}`),
        ["out.a curves", "out.hr points", "out.on points", "out.beat marks"]);
    const valuesOf = (index) => page.evaluate((i) => globalThis.labels.filter(({canvas, isTime}) => !isTime &&
        document.querySelector(`#signal-${i}`).contains(canvas)).map(({text}) => text), index);
    const panel = page.locator("#signal-1");
    await show(page, panel);
    const values = [...new Set(await valuesOf(1))].map(Number);
    assert.ok(values.length > 2 && values.every((value) => value > 50 && value < 110), values.join());
    // Each sample is a point at its value: between the lowest and the highest, with some room.
    const places = await placesOf(panel, firstColour);
    const rows = readFileSync(join(folder, "beats.csv"), "utf8").trim().split("\n").slice(1).map((line) => line.split(","));
    const beats = rows.filter((row) => row[2] !== "").map((row) => ({time: Number(row[0]), value: Number(row[2])}));
    assert.ok(beats.length > 12);
    const low = Math.min(...beats.map(({value}) => value));
    const high = Math.max(...beats.map(({value}) => value));
    const room = 0.06 * (high - low);
    const [begin, end] = await range(page);
    for (const {time, value} of beats) {
        const x = (time - begin) / (end - begin);
        const y = (value - low + room) / (high - low + 2 * room);
        assert.ok(places.some((place) => Math.abs(place.x - x) < 0.004 && Math.abs(place.y - y) < 0.02), `${time}: ${value}`);
    }
    // And there is nothing else: no line, no stem.
    const near = (place) => beats.some(({time}) => Math.abs((time - begin) / (end - begin) - place.x) < 0.006);
    assert.deepEqual(places.filter((place) => !near(place)), []);
    await show(page, page.locator("#signal-3"));
    assert.deepEqual([...new Set(await valuesOf(3))], [""], "events have no values worth an axis");
    await page.close();
});

test("a way is drawn as its rows come, and tells its values so", async () => {
    const {page, odd} = await open("way.html");
    const report = JSON.parse(await page.locator("#report").textContent());
    const index = report.signals.findIndex(({columns}) => columns.some(({name}) => name === "y"));
    assert.equal(report.signals[index].kind, "way");
    const panel = page.locator(`#signal-${index}`);
    await show(page, panel);
    // A circle: at each place twice, and nowhere between. Sorted by x it would be a zigzag that fills it.
    const places = await placesOf(panel, firstColour);
    const middle = places.filter(({x}) => Math.abs(x - 0.5) < 0.002).map(({y}) => y);
    assert.ok(middle.some((y) => y > 0.9) && middle.some((y) => y < 0.1), middle.join());
    assert.deepEqual(middle.filter((y) => y > 0.15 && y < 0.85), []);
    await panel.locator(".values summary").click();
    const cells = panel.locator(".values table").first().locator("tbody tr");
    assert.equal(await cells.nth(0).locator("th").textContent(), "1");
    assert.equal(await cells.nth(150).locator("td").first().textContent(), "-1", "down at three quarters of the way");
    assert.equal(await panel.locator(".values table").count(), 2, "what breaks elsewhere has a table of its own");
    const pixels = await colourful(panel);
    await panel.locator(".legend button").first().click();
    await settled(page);
    assert.ok(await colourful(panel) < 0.7 * pixels);
    await panel.locator(".legend button").first().click();
    // Zoomed in to the right, the axis goes as far as what is seen there.
    await panel.focus();
    await page.keyboard.press("+");
    await page.keyboard.press("End");
    const [begin] = await range(page);
    assert.ok(Math.abs(begin) < 0.05, `${begin}`);
    assert.ok((await placesOf(panel, firstColour)).some(({x, y}) => x < 0.02 && y > 0.9));
    assert.deepEqual(odd, []);
    await page.close();
});

test("a map shows every sample, the first and the last as well", async () => {
    const {page} = await open("six.html");
    const panel = page.locator("#signal-0");
    await show(page, panel);
    const over = await panel.locator(".u-over").boundingBox();
    const whole = await panel.locator("canvas").boundingBox();
    const widths = await panel.locator("canvas").evaluate((canvas, [left, width, y]) => {
        const copy = new OffscreenCanvas(canvas.width, canvas.height).getContext("2d", {willReadFrequently: true});
        copy.drawImage(canvas, 0, 0);
        const {data} = copy.getImageData(left, y, width, 1);
        const runs = [];
        for (let i = 0; i < data.length; i += 4) {
            const colour = data.slice(i, i + 3).join();
            if (runs.at(-1)?.colour === colour) ++runs.at(-1).width;
            else runs.push({colour, width: 1});
        }
        return runs.map((run) => run.width).filter((width) => width > 2); // without blended edges
    }, [Math.round(over.x - whole.x), Math.round(over.width), Math.round(over.y - whole.y + over.height / 2)]);
    assert.equal(widths.length, 6, widths.join());
    // The axis goes from the first time to the last one, so half of these two is seen.
    const step = over.width / 5;
    widths.forEach((width, i) => {
        const expected = i === 0 || i === 5 ? step / 2 : step;
        assert.ok(Math.abs(width - expected) < 4, widths.join());
    });
    await page.close();
});

test("prints on paper, in light, with every panel", async () => {
    const {page, odd} = await open("events.html", "dark");
    await page.evaluate(() => addEventListener("beforeprint", () => {
        globalThis.printed = {theme: document.documentElement.dataset.theme,
            panels: document.querySelectorAll(".panel canvas").length};
    }));
    const pdf = await page.pdf({format: "A4"});
    assert.equal(pdf.subarray(0, 5).toString(), "%PDF-");
    assert.ok(pdf.length > 20000, `${pdf.length} bytes`);
    assert.deepEqual(await page.evaluate(() => globalThis.printed),
        {theme: "light", panels: await page.locator(".panel").count()});
    assert.equal(await page.locator("html").getAttribute("data-theme"), "dark", "and the screen is as before");
    await page.emulateMedia({media: "print"});
    assert.ok(!await page.locator(".toolbar").isVisible());
    assert.deepEqual(odd, []);
    await page.close();
});

test("names are texts, whatever is in them", async () => {
    const {page, odd} = await open("odd-names.html");
    assert.match(await page.locator("h1").textContent(), /^<\/script><img src=x onerror=alert\(1\)> /);
    assert.equal(await page.locator("img").count(), 0);
    assert.deepEqual(odd, []);
    await page.close();
});

test("a failed run is told as such, and what was repaired", async () => {
    const {page} = await open("failed.html");
    assert.equal(await page.locator("h1 .state").textContent(), "failed");
    assert.match(await page.locator("#failure").textContent(), /found "three"/);
    assert.match(await page.locator("#repairs").textContent(), /1 row left out whose time repeats/);
    await page.close();
});

test("what was lost, and pins to which nothing came, stand on top", async () => {
    const silent = await open("silent.html");
    assert.match(await silent.page.locator("#losses").textContent(), /nothing to none/);
    await silent.page.close();
    // Blocks of ours lose nothing that easily: one link of a whole run is made to say so.
    const whole = readFileSync(join(folder, "rest-tremor.html"), "utf8");
    writeFileSync(join(folder, "lossy.html"), whole.replace(/"received": 862,(\s+)"taken": 862,(\s+)"lost": 0/,
        '"received": 862,$1"taken": 860,$2"lost": 2'));
    const {page} = await open("lossy.html");
    assert.match(await page.locator("#losses").textContent(), /phone\.turn to band\.in: 2 of 862 samples lost/);
    assert.equal(await page.locator("#graph .link.lossy").count(), 1);
    await page.close();
});

test("a page of recordings tells what was read of them, and has neither a graph nor settings", async () => {
    const {page, odd} = await open("plot.html");
    assert.match(await page.locator("#summary").textContent(), /rest-tremor\.csv/);
    assert.match(await page.locator("#repairs").textContent(), /back\.csv: 1 row whose time goes back/);
    assert.equal(await page.locator("#graph, #settings").count(), 0);
    await show(page, page.locator("#signal-0"));
    const [begin, end] = await range(page);
    await page.locator("#signal-0").press("+");
    const [from, to] = await range(page);
    assert.ok(Math.abs((to - from) / (end - begin) - 0.5) < 0.01, `${from} to ${to}`);
    await page.close();
    assert.deepEqual(odd, []);
    const counted = await open("counted.html");
    assert.match(await counted.page.locator(".range").textContent(), / to .* row$/);
    assert.match(await counted.page.locator("#signal-0-words").textContent(), /from 0 to 99 row/);
    await counted.page.close();
});

test("where times are dates the page says what second 0 is", async () => {
    const {page} = await open("dates.html");
    assert.equal(await page.locator("#signals .origin").textContent(), "Second 0 is 2019-08-06 10:25:50.");
    await page.emulateMedia({media: "print"});
    assert.ok(await page.locator("#signals .origin").isVisible());
    await page.close();
    const counted = await open("counted.html");
    assert.equal(await counted.page.locator("#signals .origin").count(), 0);
    await counted.page.close();
});

test("what was turned while a live run ran is listed, and a line in every panel", async () => {
    const {page, odd} = await open("turned.html");
    const {outcome, signals} = JSON.parse(await page.locator("#report").textContent());
    assert.match(await page.locator("#changes").textContent(), /sets gain\.Gain to 3/);
    const rows = page.locator("#changes tbody tr");
    assert.equal(await rows.count(), outcome.changes.length);
    const {time} = outcome.changes.find(({sentence}) => sentence === "sets gain.Gain to 3");
    assert.equal(Number(await rows.first().locator("th").textContent()).toFixed(3), time.toFixed(3));
    assert.deepEqual(signals.map(({name, watched}) => `${name} ${watched}`), ["out.x false", "wave.out true"]);
    const panel = page.locator("#signal-1");
    await show(page, panel);
    // A dash of the faint colour where the sine is not.
    const [begin, end] = await range(page);
    const faint = await panel.evaluate((element) => {
        const text = getComputedStyle(element).getPropertyValue("--faint").trim();
        return [1, 3, 5].map((i) => parseInt(text.slice(i, i + 2), 16));
    });
    const places = (await placesOf(panel, faint)).filter(({y}) => y > 0.1 && y < 0.9);
    const expected = (time - begin) / (end - begin);
    const near = places.filter(({x}) => Math.abs(x - expected) < 0.003).length;
    assert.ok(near > 20, `${near} pixels at ${time} s, in ${begin} to ${end}`);
    assert.deepEqual(odd, []);
    await page.close();
});

test("a spectrum has hertz at its axis where they are known, and counts its elements elsewhere", async () => {
    const {page} = await open("wrist-spectrum.html");
    assert.match(await page.locator("#signal-0-words").textContent(), /100 elements each from 0 to 49\.5 Hz, from/);
    assert.equal(await page.locator("#signal-0 .shades").textContent().then((text) => text.startsWith("60 dB below")), true);
    await page.close();
    const counted = await open("six.html");
    assert.match(await counted.page.locator("#signal-0-words").textContent(), /40 elements each, from/);
    await counted.page.close();
});

test("elements that a page has no room for are told", async () => {
    const {page} = await open("wide.html");
    assert.match(await page.locator("#signal-0-words").textContent(),
        /1,024 elements each, .* 476 elements behind these are not on this page\./);
    await page.close();
});

test("a night of nine channels opens soon and zooms to its finest", async () => {
    assert.ok(statSync(join(folder, "night.html")).size < 30e6);
    const begin = Date.now();
    const {page} = await open("night.html");
    await show(page, page.locator("#signal-0"));
    // A second where nothing else runs; a machine under load may take longer.
    assert.ok(Date.now() - begin < 10000, `${Date.now() - begin} ms`);
    await page.locator("#signal-0").focus();
    for (let i = 0; i < 12; ++i) await page.keyboard.press("+");
    await settled(page);
    assert.ok(await colourful(page.locator("#signal-0")) > 100);
    assert.match(await page.locator("#signal-0 .words").textContent(), /up to \d+ samples at a time/);
    await page.close();
});
