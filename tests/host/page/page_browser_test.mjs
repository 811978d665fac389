/* The report page in a browser: page_browser_test.mjs PAGE [FOLDER FOR PICTURES] */

import assert from "node:assert/strict";
import { createRequire } from "node:module";
import path from "node:path";
import { pathToFileURL } from "node:url";

const { chromium } = createRequire(new URL("../../../host/page/package.json", import.meta.url))("playwright-core");
const [file, pictures] = process.argv.slice(2);
const address = pathToFileURL(path.resolve(file)).href;
const views = {
  light: { viewport: { width: 1280, height: 1380 } },
  dark: { viewport: { width: 1280, height: 1240 }, colorScheme: "dark" },
  phone: { viewport: { width: 375, height: 720 }, isMobile: true, hasTouch: true, deviceScaleFactor: 2 },
};

/* Whether every plot has ink in the colour of each phase, the traces of one. */
const isDrawn = (page) => page.locator(".plot canvas").evaluateAll((plots) => plots.length === 7 && plots.every((plot, place) => {
  const { data } = plot.getContext("2d").getImageData(0, 0, plot.width, plot.height);
  const quantifier = place >= 2 && place < 5 ? "some" : "every";  // traces of equal voltages hide each other
  return ["--a", "--b", "--c"][quantifier]((name) => {
    const hex = getComputedStyle(document.documentElement).getPropertyValue(name).trim().match(/[0-9a-f]{2}/gi);
    const isInk = (i) => data[i + 3] > 200 && hex.every((level, k) => Math.abs(data[i + k] - parseInt(level, 16)) < 8);
    return data.filter((_, i) => i % 4 === 0 && isInk(i)).length > 50;
  });
}));

/* The part of the axis that a plot shows: its legend tells the place of the cursor. */
const widthOf = async (plot) => {
  await plot.scrollIntoViewIfNeeded();
  const box = await plot.locator(".u-over").boundingBox();
  const edges = [];
  for (const x of [box.x + 1, box.x + box.width - 1]) {
    await plot.page().mouse.move(x, box.y + box.height / 2);
    edges.push(Number(await plot.locator(".u-value").first().textContent()));
  }
  return edges[1] - edges[0];
};

const browser = await chromium.launch({ executablePath: "/usr/bin/chromium", args: ["--no-sandbox", "--disable-gpu"] });
for (const [view, settings] of Object.entries(views)) {
  const page = await browser.newPage(settings);
  const complaints = [];
  page.on("console", (message) => complaints.push(message.text()));  // policy violations as well
  page.on("pageerror", (error) => complaints.push(error.message));
  page.on("request", (request) => request.url() === address || complaints.push("asks for " + request.url()));
  await page.goto(address);
  assert.ok(await isDrawn(page), view);
  assert.ok(await page.evaluate(() => document.documentElement.scrollWidth <= innerWidth), view + " is too wide");
  for (const fullPage of pictures ? [false, true] : []) {
    await page.screenshot({ path: path.join(pictures, view + (fullPage ? "-whole.png" : ".png")), fullPage });
  }
  for (const [group, whole] of view === "light" ? [["waveforms", 1], ["spectra", 1000]] : []) {
    for (const [button, wanted] of [["Show all", whole], ["Zoom in", whole / 2], ["Forth", whole / 2]]) {
      await page.getByRole("button", { name: `${button}: ${group}`, exact: true }).press("Enter");
      for (const plot of await page.locator(`#${group} .plot`).all()) {  // both are zoomed together
        const width = await widthOf(plot);
        assert.ok(Math.abs(width - wanted) <= 0.05 * wanted, `${group} shows ${width} after ${button}`);
      }
    }
  }
  if (view === "light") {
    await page.emulateMedia({ colorScheme: "dark" });
    await page.waitForTimeout(100);
    assert.ok(await isDrawn(page), "follows a change to dark");
    assert.ok((await page.pdf({ format: "A4", path: pictures && path.join(pictures, "print.pdf") })).length > 20000);
  }
  assert.deepEqual(complaints, [], view);
}
await browser.close();
console.log("the report page is drawn, zoomed, themed and printed");
