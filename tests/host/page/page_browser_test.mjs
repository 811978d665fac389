/* Report pages in a browser: page_browser_test.mjs FOLDER [FOLDER FOR PICTURES]. The folder has sample.html, sample.json with
   the figures of the same recording, and long.html of 12 s. */

import assert from "node:assert/strict";
import { readFileSync } from "node:fs";
import { createRequire } from "node:module";
import path from "node:path";
import { pathToFileURL } from "node:url";

const modules = createRequire(new URL("../../../host/page/package.json", import.meta.url));
const { chromium } = modules("playwright-core");
const axe = readFileSync(modules.resolve("axe-core/axe.min.js"), "utf8");
const [folder, pictures] = process.argv.slice(2);
const expected = JSON.parse(readFileSync(path.join(folder, "sample.json"), "utf8"));
const views = {
  light: { viewport: { width: 1280, height: 1380 } },
  dark: { viewport: { width: 1280, height: 1240 }, colorScheme: "dark" },
  phone: { viewport: { width: 390, height: 720 }, isMobile: true, hasTouch: true, deviceScaleFactor: 2 },
};

/* Whether every plot has ink in the colour of each phase, the traces and spectra of one. */
const isDrawn = (page) => page.locator(".plot canvas").evaluateAll((plots) => plots.length === 7 && plots.every((plot, place) => {
  const { data } = plot.getContext("2d").getImageData(0, 0, plot.width, plot.height);
  const quantifier = place >= 2 ? "some" : "every";  // equal traces hide each other
  return ["--a", "--b", "--c"][quantifier]((name) => {
    const hex = getComputedStyle(document.documentElement).getPropertyValue(name).trim().match(/[0-9a-f]{2}/gi);
    const isInk = (i) => data[i + 3] > 200 && hex.every((level, k) => Math.abs(data[i + k] - parseInt(level, 16)) < 8);
    return data.filter((_, i) => i % 4 === 0 && isInk(i)).length > 50;
  });
}));

const numberIn = (text) => Number(text.replace("\u2212", "-").match(/-?\d+(\.\d+)?/)[0]);

/* What a group reads: its place on the x axis, then its curves. */
const readings = async (page, group) => (await page.locator(`#${group} .value`).allTextContents()).map(numberIn);

/* The part of the x axis that a plot shows, by pointing at its ends. */
const widthOf = async (page, group, plot) => {
  await plot.scrollIntoViewIfNeeded();
  const box = await plot.locator(".u-over").boundingBox();
  const edges = [];
  for (const x of [box.x + 1, box.x + box.width - 1]) {
    await page.mouse.move(x, box.y + box.height / 2);
    edges.push((await readings(page, group))[0]);
  }
  return edges[1] - edges[0];
};

const checkWidth = async (page, group, wanted, when) => {
  for (const plot of await page.locator(`#${group} .plot`).all()) {  // all are zoomed together
    const width = await widthOf(page, group, plot);
    assert.ok(Math.abs(width - wanted) <= 0.05 * wanted, `${group} shows ${width} and not ${wanted} after ${when}`);
  }
};

/* Zooms by buttons, keys and the mouse; the sample has 1000 ms, of which 200 are shown first. */
const zoom = async (page) => {
  for (const [group, whole] of [["waveforms", 1000], ["spectra", 1000]]) {
    for (const [button, part] of [["Show all", 1], ["Zoom in", 0.5], ["Forth", 0.5]]) {
      await page.getByRole("button", { name: new RegExp(`^${button}: ${group}`, "i") }).press("Enter");
      await checkWidth(page, group, part * whole, button);
    }
  }
  const waveforms = page.locator("#waveforms .canvases");
  for (const [key, wanted] of [["Home", 200], ["+", 100], ["ArrowRight", 100], ["-", 200], ["End", 1000]]) {
    await waveforms.press(key);
    await checkWidth(page, "waveforms", wanted, key);
  }
  const box = await page.locator("#waveforms .u-over").first().boundingBox();
  await page.mouse.move(box.x + 0.25 * box.width, box.y + 20);
  await page.mouse.down();
  await page.mouse.move(box.x + 0.75 * box.width, box.y + 60, { steps: 3 });
  await page.mouse.up();
  await checkWidth(page, "waveforms", 500, "dragging");
  await page.locator("#waveforms .u-over").first().dblclick();
  await checkWidth(page, "waveforms", 1000, "a double click");
};

/* The RMS of one cycle that the keyboard reads off the waveforms, the trace of it, and a harmonic, are those of the tool. */
const compare = async (page) => {
  const waveforms = page.locator("#waveforms .canvases");
  await waveforms.press("Home");
  for (let i = 0; i < 4; ++i) {
    await waveforms.press("+");  // until each sample has its pixel
  }
  await page.mouse.move(0, 0);
  const squares = Array(7).fill(0);
  for (let k = 0; k < 200; ++k) {
    await waveforms.press("Shift+ArrowRight");
    (await readings(page, "waveforms")).forEach((value, i) => (squares[i] += value * value / 200));
  }
  const traces = page.locator("#traces .u-over").first();
  await traces.hover();
  const [, ...rms] = await readings(page, "traces");
  const { phase_voltage: voltage, current } = expected.parameters;
  for (const [i, value] of [voltage.a, voltage.b, voltage.c, current.a, current.b, current.c].entries()) {
    const read = Math.sqrt(squares[i + 1]);
    assert.ok(Math.abs(read - value) < 1e-3 * value, `reads an RMS of ${read} and not ${value}`);
    assert.ok(Math.abs(rms[i] - value) < 1e-3 * value, `draws an RMS of ${rms[i]} and not ${value}`);
  }
  await page.mouse.move(0, 0);
  const bars = page.locator(".harmonics").first();
  const { channel, order, percent } = expected.highest_harmonics[0];
  for (let i = 1; i < order; ++i) {
    await bars.locator(".scroll").first().press("ArrowRight");
  }
  const figures = await bars.locator(".figures").textContent();
  assert.ok(figures.startsWith(`Order ${order}: `), figures);
  const read = Number(figures.match(new RegExp(`${channel} ([0-9.]+) %`))[1]);
  assert.ok(Math.abs(read - percent) < 0.02, `${channel}: ${read} % and not ${percent} %`);
};

/* Two fingers on the waveforms, moved apart, halve what is shown; one moves it. */
const touch = async (page) => {
  const client = await page.context().newCDPSession(page);
  const over = page.locator("#waveforms .u-over").first();
  await over.scrollIntoViewIfNeeded();
  const box = await over.boundingBox();
  const shown = async () => (await page.locator("#waveforms .status").textContent()).match(/[\d.]+/g).slice(0, 2).map(Number);
  const send = (type, ...shares) => client.send("Input.dispatchTouchEvent", {
    type,
    touchPoints: shares.map((share, id) => ({ id, x: box.x + share * box.width, y: box.y + box.height / 2 })),
  });
  const before = await shown();
  await send("touchStart", 0.4, 0.6);
  await send("touchMove", 0.3, 0.7);
  await send("touchEnd");
  const pinched = await shown();
  assert.ok(Math.abs((pinched[1] - pinched[0]) / (before[1] - before[0]) - 0.5) < 0.1, `${before} became ${pinched}`);
  await send("touchStart", 0.6);
  await send("touchMove", 0.4);
  await send("touchEnd");
  const moved = await shown();
  assert.ok(Math.abs(moved[0] - pinched[0] - 0.2 * (pinched[1] - pinched[0])) < 5, `${pinched} became ${moved}`);
};

const browser = await chromium.launch({ executablePath: "/usr/bin/chromium", args: ["--no-sandbox", "--disable-gpu"] });
const open = async (file, settings, complaints) => {
  const address = pathToFileURL(path.resolve(folder, file)).href;
  const page = await browser.newPage(settings);
  page.on("console", (message) => complaints.push(message.text()));  // policy violations as well
  page.on("pageerror", (error) => complaints.push(error.message));
  page.on("request", (request) => request.url() === address || complaints.push("asks for " + request.url()));
  await page.goto(address);
  return page;
};
for (const [view, settings] of Object.entries(views)) {
  const complaints = [];
  const page = await open("sample.html", settings, complaints);
  assert.ok(await isDrawn(page), view);
  assert.ok(await page.evaluate(() => document.documentElement.scrollWidth <= innerWidth), view + " is too wide");
  for (const fullPage of pictures ? [false, true] : []) {
    await page.screenshot({ path: path.join(pictures, view + (fullPage ? "-whole.png" : ".png")), fullPage });
  }
  const { violations } = await page.evaluate(`${axe}; axe.run()`);
  assert.deepEqual(violations.map(({ help, nodes }) => [help, ...nodes.map(({ html }) => html.slice(0, 200))]), [], view);
  if (view === "light") {
    await zoom(page);
    await compare(page);
    for (const canvases of await page.locator(".canvases").all()) {
      await canvases.press("Home");
    }
    await page.emulateMedia({ colorScheme: "dark" });
    await page.waitForTimeout(100);
    assert.ok(await isDrawn(page), "follows a change to dark");
    assert.ok((await page.pdf({ format: "A4", path: pictures && path.join(pictures, "print.pdf") })).length > 20000);
    await page.emulateMedia({ media: "print" });
    assert.ok(!(await page.locator(".tools").first().isVisible()), "buttons on paper");
  } else if (view === "phone") {
    await touch(page);
  }
  assert.deepEqual(complaints, [], view);
  await page.close();
}

const complaints = [];
const page = await open("long.html", views.light, complaints);
const waveforms = page.locator("#waveforms");
await waveforms.locator(".canvases").press("End");
assert.match(await waveforms.locator(".status").textContent(), /as bands, every sample from 0\.\d+ to 1\.\d+ s/);
await page.locator("#waveforms .u-over").first().hover();
assert.match(await waveforms.locator(".value").nth(1).textContent(), /^\u2212\d+\.\d to \d+\.\d V$/);
assert.deepEqual(complaints, []);
await browser.close();
console.log("the report page is drawn, zoomed, read, themed and printed");
