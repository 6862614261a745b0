// SPDX-License-Identifier: MIT
// Bundles a page into the C++ source that embeds it: node build.mjs OUT.inc
// What stands in the page for a report are three places, between which the pieces go into the program as texts.
import {build} from "esbuild";
import {mkdirSync, writeFileSync} from "node:fs";
import {dirname, join} from "node:path";
import {fileURLToPath} from "node:url";

const here = dirname(fileURLToPath(import.meta.url));
const place = "\u0000"; // in none of the pieces

async function bundle() {
    const {outputFiles, warnings} = await build({
        entryPoints: [join(here, "report/main.ts")], bundle: true, minify: true, write: false, outdir: "out",
        format: "iife", target: ["es2022"], charset: "ascii", legalComments: "inline", logLevel: "silent",
    });
    if (warnings.length > 0) throw new Error(warnings.map(({text}) => text).join("\n"));
    const textOf = (ending) => outputFiles.find(({path}) => path.endsWith(ending)).text;
    // An end tag in a script would be its end.
    return {script: textOf(".js").replaceAll("</script", "<\\/script"), style: textOf(".css")};
}

function page({script, style}) {
    const policy = "default-src 'none'; script-src 'unsafe-inline'; style-src 'unsafe-inline'; img-src data:";
    return `<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta name="generator" content="quillmere run --report">
<meta http-equiv="Content-Security-Policy" content="${policy}">
<meta name="viewport" content="width=device-width, initial-scale=1">
<title>${place}</title>
<style>${style}</style>
</head>
<body>
<main><p>This page draws itself with a script. Where scripts are switched off, it stays empty.</p></main>
<script type="application/json" id="report">${place}</script>
${place}<script>${script}</script>
</body>
</html>
`;
}

/** A text as literals short enough for every compiler, one a line. */
function literals(text) {
    const escaped = (part) => [...Buffer.from(part)].map((byte) => {
        const letter = String.fromCharCode(byte);
        if (letter === "\n") return "\\n";
        if (letter === '"' || letter === "\\" || letter === "?") return `\\${letter}`;
        return byte < 0x20 || byte > 0x7e ? `\\${byte.toString(8).padStart(3, "0")}` : letter;
    }).join("");
    const lines = [];
    for (let i = 0; i < text.length; i += 4000) lines.push(`    "${escaped(text.slice(i, i + 4000))}",`);
    return lines.join("\n");
}

const [out] = process.argv.slice(2);
const pieces = page(await bundle()).split(place);
mkdirSync(dirname(out), {recursive: true});
writeFileSync(out, pieces.map((piece) => `{\n${literals(piece)}\n},\n`).join(""));
