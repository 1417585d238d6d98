// SPDX-License-Identifier: MIT
// node bundle.mjs OUT.cpp: makes one script and one style of the sources and writes the page around them, as texts of a
// C++ source. The tool puts a title and the data in between.
import { createHash } from "node:crypto";
import { readFileSync, writeFileSync } from "node:fs";
import { dirname } from "node:path";
import { fileURLToPath } from "node:url";
import { build } from "esbuild";

const LONGEST_LITERAL = 8000; // some compilers take no more at a time

const here = dirname(fileURLToPath(import.meta.url));
const output = process.argv[2];
if (output === undefined) throw new Error("usage: node bundle.mjs OUT.cpp");

const licence = readFileSync(`${here}/node_modules/uplot/LICENSE`, "utf8").trim();
const { outputFiles } = await build({
  absWorkingDir: here,
  entryPoints: ["src/main.ts"],
  bundle: true,
  minify: true,
  format: "esm",
  target: "es2022",
  charset: "ascii",
  banner: { js: `/*!\nuPlot, which this page draws with:\n\n${licence}\n*/` },
  outdir: "out",
  write: false,
});
const textOf = (ending) => outputFiles.find(({ path }) => path.endsWith(ending)).text.trim();
const [script, style] = [textOf(".js"), textOf(".css")];

const hash = (text) => `'sha256-${createHash("sha256").update(text).digest("base64")}'`;
const policy = [
  "default-src 'none'",
  `script-src ${hash(script)}`,
  `style-src ${hash(style)}`,
  "img-src data:",
  "base-uri 'none'",
  "form-action 'none'",
].join("; ");

// Cut first: what is filled in may have such words of its own.
const [begin, body, end] = readFileSync(`${here}/shell.html`, "utf8").split(/\{(?:title|data)\}/);
const fill = (text, name, value) => text.replace(`{${name}}`, () => value);
const parts = {
  kPageBegin: fill(begin, "policy", policy),
  kPageBody: fill(body, "style", style),
  kPageEnd: fill(end, "script", script),
};

function literal(text) {
  const lines = [];
  for (let at = 0; at < text.length; at += LONGEST_LITERAL) {
    const piece = JSON.stringify(text.slice(at, at + LONGEST_LITERAL)).replace(/[\u0080-\uffff?]/g, (c) =>
      c === "?" ? "\\?" : [...Buffer.from(c)].map((byte) => `\\${byte.toString(8).padStart(3, "0")}`).join(""),
    );
    // JSON's other escapes are C's, too.
    lines.push(`    ${piece.replace(/\\u00([0-9a-f]{2})/g, (_, hex) => `\\${parseInt(hex, 16).toString(8).padStart(3, "0")}`)}`);
  }
  return lines.join("\n");
}

const source = Object.entries(parts).map(([name, text]) => `const std::string_view ${name} =\n${literal(text)};\n`);
writeFileSync(
  output,
  `// Made by page/bundle.mjs.\n#include "page/shell.h"\n\nnamespace traguardo::tool {\n\n${source.join("\n")}\n}  // namespace traguardo::tool\n`,
);
