// SPDX-License-Identifier: MIT
// The page in a browser: TRAGUARDO_TOOL=.../traguardo node --test page/test. Sessions are simulated, or the tests' own.
import assert from "node:assert/strict";
import { execFileSync } from "node:child_process";
import { mkdtempSync, readFileSync, rmSync, statSync, writeFileSync } from "node:fs";
import { createRequire } from "node:module";
import { tmpdir } from "node:os";
import { join } from "node:path";
import { fileURLToPath } from "node:url";
import { after, before, test } from "node:test";
import { chromium } from "playwright-core";

const tool = process.env.TRAGUARDO_TOOL;
const sessions = fileURLToPath(new URL("../../tests/sessions/", import.meta.url));
const axe = createRequire(import.meta.url).resolve("axe-core/axe.min.js");
const folder = mkdtempSync(join(tmpdir(), "traguardo-page-"));
const MODEST_FPS = 10; // what even a busy machine without a graphics card must reach; docs/page.md says what was measured
let browser;
const told = []; // what a page must not do

const run = (...words) => execFileSync(tool, words, { encoding: "utf8", maxBuffer: 1 << 28 });
const inFolder = (name) => join(folder, name);

async function open(files, { options = [], context = {} } = {}) {
  const path = inFolder("page.html");
  run("page", ...files, "-o", path, ...options);
  const page = await browser.newPage({ viewport: { width: 1500, height: 1000 }, ...context });
  page.on("console", (message) => told.push(`console: ${message.text()}`));
  page.on("pageerror", (error) => told.push(`error: ${error.message}`));
  page.on("dialog", (dialog) => told.push(`dialog: ${dialog.message()}`));
  page.on("request", (request) => /^(file|data):/.test(request.url()) || told.push(`request: ${request.url()}`));
  // The clipboard of a browser without a window is nobody's.
  await page.addInitScript(() => {
    navigator.clipboard.writeText = (text) => Promise.resolve((globalThis.copied = text));
  });
  await page.goto(`file://${path}`);
  await page.waitForSelector('.plots[data-drawn="yes"]', { state: "attached" });
  return page;
}

const rest = (page) => page.waitForTimeout(60); // tables follow with the next frame
const cells = (page, selector) => page.locator(selector).evaluateAll((all) => all.map((one) => one.textContent));
const copied = (page) => page.evaluate(() => globalThis.copied);
const csvRows = (text) => text.trim().split(/\r?\n/).map((line) => [...line.matchAll(/("(?:[^"]|"")*"|[^,]*)(?:,|$)/g)].map(([, field]) => field.replace(/^"|"$/g, "").replaceAll('""', '"')));

// Ties to even, as the C library prints them.
function rounded(value, decimals) {
  const scaled = value * 10 ** decimals;
  const low = Math.floor(scaled);
  const up = scaled - low > 0.5 || (scaled - low === 0.5 && low % 2 !== 0);
  return ((up ? low + 1 : low) / 10 ** decimals).toFixed(decimals).replace(/^-(?=0(\.0*)?$)/, "");
}

// Whether a text shows this value of the library to its last digit.
function shows(text, value) {
  if (typeof value === "string" || !Number.isFinite(value)) return text === String(value).replace("Infinity", "inf").replace("NaN", "nan");
  const decimals = text.split(".")[1]?.length ?? 0;
  return Math.fround(Number(text)) === Math.fround(value) || text === rounded(value, decimals);
}

before(async () => {
  browser = await chromium.launch({ executablePath: process.env.CHROMIUM ?? "/usr/bin/chromium", args: ["--no-sandbox"] });
  run("simulate", "-o", inFolder("five.qlt"), "--laps", "5");
  run("simulate", "-o", inFolder("damaged.qlt"), "--laps", "3", "--seed", "3", "--damage", "5");
});
after(async () => {
  await browser.close();
  rmSync(folder, { recursive: true });
});

test("values at the cursor are the library's, to the last digit shown", async () => {
  const page = await open([inFolder("five.qlt")]);
  const names = ["Brake Press", "Lateral Acc", "Lambda", "GPS Latitude"];
  for (const name of names) await page.getByLabel(name).first().check();
  const known = {};
  for (const name of [...names, "Speed", "Engine RPM", "Gear"]) known[name] = JSON.parse(run("samples", inFolder("five.qlt"), name, "--json"));
  const laps = JSON.parse(run("laps", inFolder("five.qlt"), "--json"));
  let compared = 0;
  for (const kind of ["distance", "lap"]) {
    await page.locator("#axis").selectOption(kind);
    for (const place of [0.11, 0.5, 0.87]) {
      const box = await page.locator(".u-over").nth(1).boundingBox();
      await page.mouse.move(box.x + box.width * place, box.y + 20);
      await rest(page);
      const heads = (await cells(page, ".values thead th")).slice(1).map((text) => Number(text.replace("Lap ", "")));
      const times = (await cells(page, ".values tbody tr:first-child td")).slice(1).map(Number);
      for (const [name, { times_s, values }] of Object.entries(known)) {
        const row = page.locator(`.values tr[data-key^="logged ${name} "], .values tr[data-key^="gps ${name} "]`);
        const shown = await row.locator("span[title]").evaluateAll((all) => all.map((one) => [one.textContent, one.title]));
        shown.forEach(([text, title], i) => {
          const time = laps[heads[i] - 1].start_s + times[i];
          const at = Number(/at (.*) s/.exec(title)[1]);
          const k = times_s.findIndex((one) => Math.abs(one - at) < 1e-7);
          assert.ok(k >= 0 && at <= time + 0.0006 && (times_s[k + 1] ?? Infinity) > time - 0.0006, `${name}: ${title} for ${time}`);
          assert.ok(shows(text, values[k]), `${name} at ${at}: ${text} for ${values[k]}`);
          compared++;
        });
      }
    }
  }
  assert.equal(compared, 2 * 3 * 7 * 2);
  await page.close();
});

test("every sample of odd sessions is in the page: none, without laps, with not-a-number and gaps", async () => {
  for (const name of ["logger/random_9008", "logger/random_9000", "logger/random_9003", "logger/texts_twice", "logger/tracks_record", "gps/random_9016", "gps/gps_bad_fixes_in_between", "legacy/random_9044", "logger/integers"]) {
    const file = `${sessions}${name}.${name.startsWith("legacy") ? "wmp" : "qlt"}`;
    const page = await open([file]);
    if (name.endsWith("tracks_record")) {
      assert.match(await page.locator("main").innerText(), /no laps[^]*no channels[^]*There are no samples[^]*no GPS track/);
    }
    await page.locator("#axis").selectOption("session");
    const boxes = page.locator(".channels li input");
    for (let i = 0; i < Math.min(20, await boxes.count()); i++) await boxes.nth(i).check();
    await rest(page);
    await page.getByRole("button", { name: "Copy range as CSV" }).click();
    const chosen = await page.locator(".channels li input:checked").evaluateAll((all) => all.map((one) => one.parentElement.childNodes[1].textContent));
    const shown = csvRows((await copied(page)) ?? "").slice(1);
    for (const channel of JSON.parse(run("channels", file, "--json")).filter((one) => chosen.some((title) => title.startsWith(one.name)))) {
      const { times_s, values } = JSON.parse(run("samples", file, channel.name, "--json"));
      const order = [...times_s.keys()].sort((a, b) => times_s[a] - times_s[b] || a - b);
      const rows = shown.filter((row) => row[2] === channel.name && row[3] === channel.unit);
      assert.equal(rows.length, values.length, `${name}: ${channel.name}`);
      rows.forEach((row, i) => assert.ok(shows(row[6], values[order[i]]), `${name}, ${channel.name}, ${row} for ${values[order[i]]}`));
    }
    await page.close();
  }
});

test("each control does what it says, and its keys do", async () => {
  const page = await open([inFolder("five.qlt")]);
  const row = (lap) => page.locator(".laps tbody tr").nth(lap - 1);
  await row(1).locator("td").nth(2).click();
  assert.ok(await page.getByLabel("Show lap 1", { exact: true }).isChecked());
  await page.getByLabel("Show lap 2", { exact: true }).uncheck();
  await page.getByLabel("Take lap 1 as the reference").check();
  await rest(page);
  assert.deepEqual((await cells(page, ".values thead th")).slice(1), ["Lap 1", "Lap 4"]);
  // Times at the line differ by what the lap times do.
  const plots = page.locator(".plots");
  await plots.focus();
  await page.keyboard.press("End");
  await rest(page);
  assert.deepEqual((await cells(page, ".values tbody tr:nth-child(2) td")).slice(1), ["0.000", "-6.448"]);
  const places = async (act) => {
    const before = await page.locator("#cursor").evaluate((one) => one.value);
    await act();
    await rest(page);
    return [Number(before), Number(await page.locator("#cursor").evaluate((one) => one.value))];
  };
  for (const [key, sign] of [["ArrowLeft", -1], ["PageUp", -1], ["Home", -1], ["ArrowRight", 1], ["PageDown", 1]]) {
    const [from, to] = await places(() => page.keyboard.press(key));
    assert.equal(Math.sign(to - from), sign, key);
  }
  const over = page.locator(".u-over").nth(1);
  const box = await over.boundingBox();
  const [midX, midY] = [box.x + box.width / 2, box.y + box.height / 2];
  const sight = () => page.locator("#cursor").evaluate((one) => [Number(one.min), Number(one.max)]);
  const whole = await sight();
  const press = async (key) => (await plots.focus(), await page.keyboard.press(key));
  const click = (name) => page.getByRole("button", { name }).click();
  const drag = async (to) => {
    await page.mouse.move(midX, midY);
    await page.mouse.down();
    await page.mouse.move(to, midY, { steps: 3 });
    await page.mouse.up();
  };
  const shifted = async (act) => (await page.keyboard.down("Shift"), await act(), await page.keyboard.up("Shift"));
  // What each does to the left and the right edge of what is in sight.
  const moves = [
    ["Zoom in", () => click("Zoom in"), [1, -1]],
    ["Pan right", () => click("Pan right"), [1, 1]],
    ["Pan left", () => click("Pan left"), [-1, -1]],
    ["Zoom out", () => click("Zoom out"), [-1, 1]],
    ["+", () => press("+"), [1, -1]],
    ["Shift and arrow", () => press("Shift+ArrowRight"), [1, 1]],
    ["-", () => press("-"), [-1, 1]],
    ["wheel", async () => (await page.mouse.move(midX, midY), await page.mouse.wheel(0, -400)), [1, -1]],
    ["wheel aside", () => page.mouse.wheel(60, 0), [1, 1]],
    ["Shift and drag", () => shifted(() => drag(midX + 40)), [-1, -1]],
    ["drag", () => drag(midX + 90), [1, -1]],
  ];
  await press("Home");
  await page.mouse.move(midX, midY);
  for (const [name, act, [low, high]] of moves) {
    const before = await sight();
    await act();
    await rest(page);
    const after = await sight();
    assert.deepEqual([Math.sign(after[0] - before[0]), Math.sign(after[1] - before[1])], [low, high], name);
  }
  for (const act of [() => press("Escape"), () => page.mouse.dblclick(midX, midY), () => click("Whole length")]) {
    await act();
    await rest(page);
    assert.deepEqual(await sight(), whole);
    await click("Zoom in");
  }
  await page.getByLabel("Heights by what is in sight").check();
  await page.getByLabel("Search channels").fill("susp");
  assert.deepEqual(await cells(page, ".channels li"), ["Suspension FL (mm)"]);
  await page.keyboard.press("Enter");
  await page.locator("figure", { hasText: "Suspension FL (mm)" }).waitFor();
  await page.getByRole("button", { name: "Remove Suspension FL (mm)" }).click();
  assert.equal(await page.locator("figure", { hasText: "Suspension" }).count(), 0);
  await page.getByLabel("Colour by").selectOption({ label: "Engine RPM (rpm)" });
  await rest(page);
  assert.match(await page.locator(".scale-line").innerText(), /\d+ to \d+ rpm/);
  const [from, to] = await places(() => page.locator(".map-frame canvas").first().click({ position: { x: 60, y: 150 } }));
  assert.notEqual(from, to);
  await page.getByRole("button", { name: "Copy as CSV", exact: true }).click();
  const table = csvRows(await copied(page));
  assert.deepEqual(table[4].slice(0, 5), ["4", "229.296000", "74.189000", "0.000000", "true"]);
  assert.equal(table[4].slice(5).reduce((sum, split) => sum + Number(split) * 1000, 0), 74189);
  for (const theme of ["light", "dark", "as the system"]) {
    await page.getByRole("button", { name: /^Colours/ }).click();
    await page.getByRole("button", { name: `Colours: ${theme}` }).waitFor();
  }
  await page.close();
});

test("two fingers zoom, one pans", async () => {
  const page = await open([inFolder("five.qlt")], { context: { hasTouch: true } });
  const box = await page.locator(".u-over").nth(1).boundingBox();
  const touch = await page.context().newCDPSession(page);
  const send = (type, ...xs) => touch.send("Input.dispatchTouchEvent", { type, touchPoints: xs.map((x, id) => ({ id, x: box.x + x, y: box.y + 40 })) });
  const sight = () => page.locator("#cursor").evaluate((one) => [Number(one.min), Number(one.max)]);
  const [low, high] = await sight();
  await send("touchStart", 200);
  await send("touchStart", 200, 300);
  for (const x of [320, 360, 420]) await send("touchMove", 200, x);
  await send("touchEnd");
  await rest(page);
  const zoomed = await sight();
  assert.ok(zoomed[0] > low && zoomed[1] < high);
  await send("touchStart", 300);
  for (const x of [280, 240, 200]) await send("touchMove", x);
  await send("touchEnd");
  await rest(page);
  const panned = await sight();
  assert.ok(panned[0] > zoomed[0] && panned[1] > zoomed[1]);
  await page.close();
});

test("keys alone reach every control, and axe finds nothing serious, light, dark, narrow and with two files", async () => {
  for (const [files, context] of [
    [["five.qlt"], {}],
    [["five.qlt", "damaged.qlt"], { colorScheme: "dark" }],
    [["damaged.qlt"], { viewport: { width: 390, height: 800 } }],
  ]) {
    const page = await open(files.map(inFolder), { context });
    await page.locator("summary").click();
    await page.evaluate(readFileSync(axe, "utf8"));
    const { violations } = await page.evaluate(() => globalThis.axe.run());
    const serious = violations.filter(({ impact }) => impact === "serious" || impact === "critical");
    assert.deepEqual(serious.map(({ id, nodes }) => `${id}: ${nodes[0].html}`), []);
    const unreached = await page.evaluate(() => {
      // Of radio buttons with one name the group is one stop; arrow keys do the rest.
      const all = document.querySelectorAll("button, select, summary, canvas[tabindex], .plots, input:not([type=radio]), input[type=radio]:checked");
      globalThis.wanted = new Set([...all].filter((one) => !one.disabled));
      document.activeElement.blur();
      document.addEventListener("focusin", ({ target }) => globalThis.wanted.delete(target));
      return globalThis.wanted.size;
    });
    for (let i = 0; i < unreached + 20; i++) await page.keyboard.press("Tab");
    assert.deepEqual(await page.evaluate(() => [...globalThis.wanted].map((one) => one.outerHTML)), []);
    await page.close();
  }
});

test("texts of a file are texts, and the policy lets nothing out", async () => {
  // Same lengths; the checksum of a tag is the sum of its bytes.
  const bytes = readFileSync(inFolder("five.qlt"));
  for (const [word, other] of [["Throttle", "<script>"], ["Formula 7", "</script>"]]) {
    const at = bytes.indexOf(word);
    bytes.write(other, at, "latin1");
    // The channel table is a tag of tags.
    for (const begin of [bytes.lastIndexOf("<h", at), bytes.indexOf("<hCNF")]) {
      const end = begin + 12 + bytes.readUInt32LE(begin + 6);
      bytes.writeUInt16LE(bytes.subarray(begin + 12, end).reduce((sum, byte) => sum + byte, 0) & 0xffff, end + 5);
    }
  }
  const file = inFolder('<img src=x onerror=alert(1)>&".qlt');
  writeFileSync(file, bytes);
  const page = await open([file]);
  await page.getByLabel("<script>").check();
  await page.locator("figure", { hasText: "<script> (%)" }).waitFor();
  assert.match(await page.locator("main").innerText(), /Vehicle\s+<\/script>/);
  assert.equal(await page.locator("main img, main script").count(), 0);
  assert.equal(await page.title(), '<img src=x onerror=alert(1)>&".qlt');
  const policy = await page.locator("meta[http-equiv]").getAttribute("content");
  assert.match(policy, /^default-src 'none'; script-src 'sha256-[^']+'; style-src 'sha256-[^']+'; img-src data:; /);
  const refused = await page.evaluate(() => fetch("https://example.org/").then(() => "let out", () => "refused"));
  assert.equal(refused, "refused");
  told.splice(0); // The browser says so in its console.
  await page.close();
});

test("long sessions stay small and open: --laps and --channels, 2,000 channels, 500 laps", async () => {
  run("simulate", "-o", inFolder("hour.qlt"), "--minutes", "60", "--channels", "100");
  run("simulate", "-o", inFolder("many.qlt"), "--channels", "2000", "--laps", "1");
  run("simulate", "-o", inFolder("laps.qlt"), "--channels", "3", "--laps", "500");
  for (const [name, options, check] of [
    ["hour.qlt", [], /Reduced/],
    ["hour.qlt", ["--laps", "2-3", "--channels", "Engine*", "--channels", "Aux 0033"], /Channels\s+4/],
    ["many.qlt", [], /40 of 2015 shown/],
    ["laps.qlt", [], /500/],
  ]) {
    const page = await open([inFolder(name)], { options });
    assert.ok(statSync(inFolder("page.html")).size < 20e6);
    assert.match(await page.locator("main").innerText(), check);
    await page.close();
  }
});

test("eight channels of ten laps: soon seen, and at a fair pace", async (t) => {
  run("simulate", "-o", inFolder("ten.qlt"), "--laps", "10");
  const page = await open([inFolder("ten.qlt")]);
  const first = await page.evaluate(() => performance.getEntriesByName("first-plot")[0].startTime);
  const boxes = page.locator(".laps tbody input[type=checkbox]");
  for (let i = 0; i < 10; i++) await boxes.nth(i).check();
  for (let i = 3; i < 8; i++) await page.locator(".channels li input:not(:checked)").first().click();
  await page.waitForTimeout(1000);
  assert.equal(await page.locator(".plots figure").count(), 9);
  const paces = await page.evaluate(async () => {
    const over = document.querySelector(".u-over");
    const box = over.getBoundingClientRect();
    const FRAMES = 60;
    const pace = async (deltaX, deltaY) => {
      const start = performance.now();
      for (let i = 0; i < FRAMES; i++) {
        const place = { clientX: box.left + box.width / 2, clientY: box.top + 9, cancelable: true };
        over.dispatchEvent(new WheelEvent("wheel", { deltaX, deltaY, ...place }));
        await new Promise(requestAnimationFrame);
      }
      return (FRAMES * 1000) / (performance.now() - start);
    };
    return { zoom: await pace(0, -15), pan: await pace(9, 0) };
  });
  t.diagnostic(`first plot after ${first.toFixed(0)} ms; zoom ${paces.zoom.toFixed(0)}, pan ${paces.pan.toFixed(0)} frames a second`);
  assert.ok(first < 5000 && paces.zoom > MODEST_FPS && paces.pan > MODEST_FPS);
  await page.close();
});

test("no page said anything in the console, asked for anything, or failed", () => assert.deepEqual(told, []));
