// SPDX-License-Identifier: MIT
// Pictures of reports: node pictures.mjs (REPORT light|dark PICTURE)...
import {chromium} from "playwright-core";
import {resolve} from "node:path";
import {pathToFileURL} from "node:url";

const wishes = process.argv.slice(2);
const browser = await chromium.launch({executablePath: process.env.CHROMIUM ?? "/usr/bin/chromium", args: ["--no-sandbox"]});
for (let i = 0; i + 2 < wishes.length; i += 3) {
    const [report, colorScheme, picture] = wishes.slice(i, i + 3);
    const page = await browser.newPage({viewport: {width: 1000, height: 900}, colorScheme});
    await page.goto(pathToFileURL(resolve(report)).href);
    const top = await page.locator("#graph").boundingBox();
    const panel = page.locator("#signal-0");
    await panel.scrollIntoViewIfNeeded();
    await panel.locator("canvas").waitFor();
    const over = await panel.locator(".u-over").boundingBox();
    await page.mouse.move(over.x + 0.62 * over.width, over.y + 0.3 * over.height);
    await page.waitForTimeout(300);
    // From the graph to the second signal, which shares the cursor.
    const last = page.locator(".panel").nth(1);
    const end = await (await last.count() > 0 ? last : panel).boundingBox();
    const scrolled = await page.evaluate(() => scrollY);
    await page.screenshot({path: picture, fullPage: true,
        clip: {x: 0, y: top.y, width: 1000, height: end.y + end.height + scrolled - top.y + 12}});
    await page.close();
}
await browser.close();
