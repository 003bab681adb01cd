// The browser of the tests, and what they ask of each page.
import assert from "node:assert/strict";
import { createRequire } from "node:module";
import fs from "node:fs";
import path from "node:path";
import { after } from "node:test";
import { pathToFileURL } from "node:url";

const require = createRequire(path.join(process.env.KESTO_PAGE_PACKAGES, "package.json"));
const puppeteer = require("puppeteer-core");
const kAxe = fs.readFileSync(require.resolve("axe-core/axe.min.js"), "utf8");
// Where pictures of the pages are left for a person to look at.
const kPictures = process.env.KESTO_PAGE_PICTURES;

// What the tests cause themselves, by reading from a canvas.
const kOfTests = /willReadFrequently/;

// All that a minute has room for; with KESTO_TEST_LONG=1 more widths, and each page in the dark.
export const long = Boolean(process.env.KESTO_TEST_LONG);
export const few = [480, 2560];
export const widths = long ? [400, 480, 640, 719, 720, 900, 1280, 1749, 1750, 2560] : [400, 480, 1280, 2560];

let shared = null;
after(() => shared?.close());

// One browser for all tests of a file.
export async function withBrowser(test) {
  shared ??= await puppeteer.launch({ executablePath: process.env.KESTO_CHROMIUM, protocolTimeout: 120000,
    args: ["--no-sandbox", "--disable-gpu", "--disable-dev-shm-usage", "--disable-background-networking", "--disable-component-update"] });
  await test(new Browser(shared));
}

class Browser {
  constructor(browser) {
    this.browser = browser;
  }

  // Loads a page, which must run without an error and ask for nothing that does not stand in it.
  async open(file, { width = 1280, dark = false, hash = "" } = {}) {
    const page = await this.browser.newPage();
    const tab = Object.assign(new Tab(page, path.basename(file, ".html")), { faults: [] });
    page.on("pageerror", error => tab.faults.push(`error: ${error.message}`));
    page.on("console", message => ["error", "warning", "warn"].includes(message.type()) && !kOfTests.test(message.text()) && tab.faults.push(`console: ${message.text()}`));
    page.on("request", request => /^(file|data|blob):/.test(request.url()) || tab.faults.push(`asks for ${request.url()}`));
    await page.setViewport({ width, height: 900 });
    await page.emulateMediaFeatures([{ name: "prefers-color-scheme", value: dark ? "dark" : "light" }]);
    await page.goto(pathToFileURL(file).href + hash);
    await page.waitForFunction(() => document.documentElement.dataset.ready === "yes", { timeout: 20000 });
    tab.usable = await page.evaluate(() => performance.now());
    await tab.settle();
    return tab;
  }
}

class Tab {
  constructor(page, name) {
    this.page = page;
    this.name = name;
  }

  run(script, ...args) { return this.page.evaluate(script, ...args); }
  text(selector) { return this.page.$eval(selector, node => node.innerText); }
  texts(selector) { return this.page.$$eval(selector, nodes => nodes.map(node => node.innerText ?? node.textContent)); }

  settle() {
    return this.page.evaluate(() => new Promise(done => requestAnimationFrame(() => setTimeout(done, 60))));
  }

  // Clicks the button, box or summary that says so.
  async click(text, within = "body") {
    const clicked = await this.page.evaluate((wanted, root) => {
      const nodes = [...document.querySelectorAll(`${root} :is(button, summary, label)`)];
      const found = nodes.find(node => (node.getAttribute("aria-label") ?? node.textContent).trim() === wanted && node.getClientRects().length);
      found?.click();
      return Boolean(found);
    }, text, within);
    assert.ok(clicked, `nothing to click says "${text}" in ${within}`);
    await this.settle();
  }

  async resize(width) {
    await this.page.setViewport({ width, height: 900 });
    await this.settle();
    await this.settle();
  }

  // Nothing may hang over the right edge, whatever the width.
  async fits() {
    const over = await this.run(() => document.documentElement.scrollWidth - innerWidth);
    assert.ok(over <= 0, `${this.name}: ${over} pixels wider than the window of ${await this.run(() => innerWidth)}`);
  }

  // Labels of the flow diagram: no two touch, and none is cut off by the picture.
  async labelsStandApart() {
    const faults = await this.run(() => {
      const svg = document.querySelector("#paths svg.sankey");
      if (!svg) return ["there is no flow diagram"];
      const frame = svg.getBoundingClientRect();
      const boxes = [...svg.querySelectorAll(".label")].map(node => ({ box: node.getBoundingClientRect(), text: node.textContent }));
      const found = [];
      boxes.forEach(({ box, text }, i) => {
        if (box.left < frame.left - 1 || box.right > frame.right + 1 || box.top < frame.top - 1 || box.bottom > frame.bottom + 1) found.push(`cut: ${text}`);
        for (const other of boxes.slice(i + 1)) {
          if (box.left < other.box.right && other.box.left < box.right && box.top < other.box.bottom && other.box.top < box.bottom) found.push(`${text} touches ${other.text}`);
        }
      });
      return boxes.length ? found : ["there are no labels"];
    });
    assert.deepEqual(faults, [], `${this.name} at ${await this.run(() => innerWidth)}`);
  }

  // What stands in the way of readers with a screen reader, a keyboard, or poor sight.
  async accessible() {
    if (!await this.run(() => "axe" in window)) await this.page.evaluate(kAxe);
    const found = await this.page.evaluate(async () => (await axe.run()).violations.map(one => `${one.id}: ${one.nodes[0].html}`));
    assert.deepEqual(found, [], this.name);
  }

  // Points of the charts that bear colour rather than grey.
  coloured(selector) {
    return this.page.$$eval(`${selector} canvas`, nodes => nodes.map(canvas => {
      const { data } = canvas.getContext("2d").getImageData(0, 0, canvas.width, canvas.height);
      let count = 0;
      for (let i = 0; i < data.length; i += 4) {
        if (data[i + 3] > 128 && Math.max(data[i], data[i + 1], data[i + 2]) - Math.min(data[i], data[i + 1], data[i + 2]) > 60) ++count;
      }
      return count;
    }));
  }

  // Left for a person to look at.
  async picture(suffix) {
    if (kPictures) await this.page.screenshot({ path: path.join(kPictures, `${this.name}-${suffix}.png`), fullPage: true });
  }

  async pdf(file) {
    await this.page.pdf({ path: file, preferCSSPageSize: true, printBackground: true });
    if (kPictures) fs.copyFileSync(file, path.join(kPictures, `${this.name}.pdf`));
  }

  async close() {
    assert.deepEqual(this.faults, [], this.name);
    await this.page.close();
  }
}

// At all widths, in the light and in the dark.
export async function looksRight(browser, file, { all = widths } = {}) {
  const tab = await browser.open(file);
  await tab.accessible();
  for (const width of all) {
    await tab.resize(width);
    await tab.fits();
    await tab.picture(String(width));
  }
  await tab.page.emulateMediaFeatures([{ name: "prefers-color-scheme", value: "dark" }]);
  await tab.resize(long ? 480 : 1280);
  await tab.accessible();
  await tab.picture("dark");
  await tab.close();
}
