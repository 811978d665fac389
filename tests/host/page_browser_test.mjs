/* The report page in a browser: page_browser_test.mjs PAGE [FOLDER FOR PICTURES]
   Its plots are drawn and zoomed together by mouse, buttons and keyboard, its policy is kept, nothing is said on the
   console and nothing is asked of the network. */

import assert from "node:assert/strict";
import { mkdtempSync, rmSync } from "node:fs";
import { createRequire } from "node:module";
import { tmpdir } from "node:os";
import path from "node:path";
import { pathToFileURL } from "node:url";

const require = createRequire(new URL("../../host/page/package.json", import.meta.url));
const { chromium } = require("playwright-core");

const [file, pictures] = process.argv.slice(2);
const address = pathToFileURL(path.resolve(file)).href;
const args = ["--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run", "--disable-background-networking",
  "--disable-component-update", "--disable-sync"];
const profile = mkdtempSync(path.join(tmpdir(), "report-browser-"));
const views = {
  light: { viewport: { width: 1280, height: 1380 } },
  dark: { viewport: { width: 1280, height: 1240 }, colorScheme: "dark" },
  phone: { viewport: { width: 375, height: 720 }, isMobile: true, hasTouch: true, deviceScaleFactor: 2 },
};

/* Opens the page, and collects what a quiet page would not do. */
const opened = async (view) => {
  const context = await chromium.launchPersistentContext(path.join(profile, view),
    { executablePath: "/usr/bin/chromium", headless: true, args, ...views[view] });
  const page = context.pages()[0] ?? await context.newPage();
  const complaints = [];
  page.on("console", (message) => complaints.push(message.text()));
  page.on("pageerror", (error) => complaints.push(error.message));
  page.on("request", (request) => request.url() === address || complaints.push("asks for " + request.url()));
  await page.addInitScript(() => addEventListener("securitypolicyviolation",
    (event) => console.error("policy violated: " + event.violatedDirective)));
  await page.goto(address);
  return { context, page, complaints };
};

/* The ticks of a plot are painted, so its stretch is asked of the legend, with the cursor at both edges. */
const stretchOf = async (page, group, plot) => {
  const over = page.locator(`#${group} .u-over`).nth(plot);
  await over.scrollIntoViewIfNeeded();
  const box = await over.boundingBox();
  const value = page.locator(`#${group} .plot`).nth(plot).locator(".u-series .u-value").first();
  const edges = [];
  for (const x of [box.x + 1, box.x + box.width - 1]) {
    await page.mouse.move(x, box.y + box.height / 2);
    edges.push(Number(await value.textContent()));
  }
  return edges;
};
const widthOf = async (page, group, plot) => {
  const [first, last] = await stretchOf(page, group, plot);
  return last - first;
};

const isAbout = (value, wanted) => Math.abs(value - wanted) <= 0.05 * wanted;

/* Each way to zoom gives the same stretch to both plots of the group. */
const checkZoom = async (page, group, whole) => {
  const expectBoth = async (width, after) => {
    for (const plot of [0, 1]) {
      const found = await widthOf(page, group, plot);
      assert.ok(isAbout(found, width), `${group} ${plot} shows ${found}, not ${width}, after ${after}`);
    }
  };
  const press = (name) => page.getByRole("button", { name: `${name}: ${group}`, exact: true }).click();
  await press("Show all");
  await expectBoth(whole, "Show all");
  await press("Zoom in");
  await expectBoth(whole / 2, "Zoom in");
  await press("Forth");
  await expectBoth(whole / 2, "Forth");
  assert.ok(isAbout((await stretchOf(page, group, 1))[1], whole), "Forth ends where the axis ends");
  await page.getByRole("button", { name: `Zoom in: ${group}`, exact: true }).focus();
  await page.keyboard.press("Enter");
  await expectBoth(whole / 4, "Enter on Zoom in");
  await press("Show all");
  const over = page.locator(`#${group} .u-over`).first();
  await over.scrollIntoViewIfNeeded();
  const box = await over.boundingBox();
  await page.mouse.move(box.x + 0.2 * box.width, box.y + 50);
  await page.mouse.down();
  await page.mouse.move(box.x + 0.3 * box.width, box.y + 60, { steps: 5 });
  await page.mouse.up();
  await expectBoth(whole / 10, "dragging");
  await page.mouse.dblclick(box.x + 0.5 * box.width, box.y + 50);
  await expectBoth(whole, "a double click");
};

/* Whether a plot has ink in the colour of each phase. */
const coloursOf = (page, group, plot) =>
  page.locator(`#${group} canvas`).nth(plot).evaluate((canvas) => {
    const copy = new OffscreenCanvas(canvas.width, canvas.height).getContext("2d", { willReadFrequently: true });
    copy.drawImage(canvas, 0, 0);
    const { data } = copy.getImageData(0, 0, canvas.width, canvas.height);
    const style = getComputedStyle(document.documentElement);
    return ["--a", "--b", "--c"].map((name) => {
      const wanted = style.getPropertyValue(name).trim().match(/[0-9a-f]{2}/gi).map((hex) => parseInt(hex, 16));
      let count = 0;
      for (let i = 0; i < data.length; i += 4) {
        count += data[i + 3] > 200 && wanted.every((level, k) => Math.abs(data[i + k] - level) < 8) ? 1 : 0;
      }
      return count;
    });
  });

try {
  for (const view of Object.keys(views)) {
    const { context, page, complaints } = await opened(view);
    for (const group of ["waveforms", "spectra"]) {
      for (const plot of [0, 1]) {
        const counts = await coloursOf(page, group, plot);
        assert.ok(counts.every((count) => count > 50), `${view}: ${group} ${plot} has ${counts} pixels by phase`);
      }
    }
    const overhang = await page.evaluate(() => document.documentElement.scrollWidth - innerWidth);
    assert.ok(overhang <= 0, `${view}: the page is ${overhang} pixels too wide`);
    if (pictures) {
      await page.screenshot({ path: path.join(pictures, view + ".png") });
      await page.screenshot({ path: path.join(pictures, view + "-whole.png"), fullPage: true });
    }
    if (view === "light") {
      await checkZoom(page, "waveforms", 1);
      await checkZoom(page, "spectra", 1000);
      const name = page.locator("#waveforms .u-series th").nth(1);
      await name.focus();
      await page.keyboard.press("Enter");
      assert.deepEqual((await coloursOf(page, "waveforms", 0)).map((count) => count > 50), [false, true, true]);
      await page.emulateMedia({ colorScheme: "dark" });
      await page.waitForTimeout(100);
      assert.ok((await coloursOf(page, "waveforms", 1)).every((count) => count > 50), "follows a change to dark");
      const print = await page.pdf({ format: "A4", path: pictures && path.join(pictures, "print.pdf") });
      assert.ok(print.length > 20000);
    }
    assert.deepEqual(complaints, [], view);
    await context.close();
  }
  console.log("the report page is drawn, zoomed, themed and printed");
} finally {
  rmSync(profile, { recursive: true, force: true });
}
