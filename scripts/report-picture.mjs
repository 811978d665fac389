/* Takes a picture of a part of a report: report-picture.mjs PAGE PICTURE [FIRST [LAST]], of sections by their ids; without
   them of the top of the page to the end of the results. */

import { createRequire } from "node:module";
import path from "node:path";
import { pathToFileURL } from "node:url";

const { chromium } = createRequire(new URL("../host/page/package.json", import.meta.url))("playwright-core");
const [file, picture, first, last = first] = process.argv.slice(2);
const browser = await chromium.launch({ executablePath: "/usr/bin/chromium", args: ["--no-sandbox", "--disable-gpu"] });
const page = await browser.newPage({ viewport: { width: 1200, height: 900 } });
await page.goto(pathToFileURL(path.resolve(file)).href);
const edges = await page.evaluate(([from, to]) => {
  const boxOf = (id) => document.getElementById(id).getBoundingClientRect();
  return [from ? boxOf(from).top : 0, boxOf(to ?? "results").bottom + 16];
}, [first, last]);
await page.screenshot({ path: picture, fullPage: true, clip: { x: 0, y: edges[0], width: 1200, height: edges[1] - edges[0] } });
await browser.close();
