// A small page as its reader uses it: looks, search, resolution, links, files.
import assert from "node:assert/strict";
import fs from "node:fs";
import path from "node:path";
import { test } from "node:test";
import { looksRight, withBrowser } from "./browser.mjs";
import { charts, folder, house } from "./runs.mjs";

const file = house();

test("it looks right at all widths, in the light and in the dark", () => withBrowser(browser => looksRight(browser, file)));

test("it is soon usable, and its sections stand in order", () => withBrowser(async browser => {
  const tab = await browser.open(file);
  assert.ok(tab.usable < 2000, `usable after ${tab.usable} ms`);
  const order = ["figures", "paths", "months", "years", "stores", "network", "series", "balance"];
  const ids = await tab.page.$$eval("main section", nodes => nodes.map(node => node.id));
  assert.deepEqual(ids, order.filter(id => ids.includes(id)));
  assert.ok(ids.includes("network") && ids.includes("series") && ids.includes("balance"));
  for (const id of ids) assert.ok((await tab.text(`#${id}-title`)).length > 0);
  assert.match(await tab.text("#lead"), /1 January 2012 to 31 December 2015 · 13 components · finished, no warnings/);
  assert.match(await tab.text("#stores"), /^The store\s+How full it is over time/);
  assert.match(await tab.text("#balance"), /mains\s+mains\s+364\.2/);
  await tab.close();
}));

test("a series is searched, chosen, and shown by month", { skip: !charts }, () => withBrowser(async browser => {
  const tab = await browser.open(file);
  assert.ok((await tab.coloured("#series")).every(count => count > 300));
  await tab.page.type("#series input[type=search]", "SHOWER:d");
  assert.deepEqual((await tab.texts("#series .items bdi")), ["shower:demand"]);
  await tab.page.click("#series .items input");
  const shown = await tab.texts("#series .keys bdi");
  assert.equal(shown[shown.length - 1], "shower:demand");
  // Demands are dashed, whatever their colour.
  assert.ok(await tab.run(() => document.querySelector("#series .keys li:last-child line").getAttribute("stroke-dasharray")));
  await tab.click("Month", "#series");
  assert.match(await tab.run(() => location.hash), /by=month/);
  assert.match(await tab.page.$eval("#series .lines", node => node.getAttribute("aria-label")), /by month: .*shower:demand/);
  await tab.click("Duration curve", "#series");
  assert.ok((await tab.coloured("#series")).every(count => count > 100));
  await tab.accessible();
  await tab.close();
}));

test("no more than eight at a time", { skip: !charts }, () => withBrowser(async browser => {
  const tab = await browser.open(file);
  for (let i = 0; i < 12; ++i) {
    await tab.run(() => document.querySelector("#series .items input:not(:checked):not(:disabled)")?.click());
  }
  assert.equal((await tab.texts("#series .keys li")).length, 8);
  const colours = await tab.page.$$eval("#series .keys line", nodes => nodes.map(node => node.getAttribute("stroke")));
  assert.equal(new Set(colours).size, 8);
  assert.match(await tab.text("#series .finder [role=status]"), /Eight are shown/);
  await tab.click("Leave out shower:demand", "#series").catch(() => tab.run(() => document.querySelector("#series .remove").click()));
  assert.equal((await tab.texts("#series .keys li")).length, 7);
  await tab.close();
}));

test("a link shows the same selection", { skip: !charts }, () => withBrowser(async browser => {
  const tab = await browser.open(file, { hash: "#series=tank%3Aoverflow&series=mains%3Aoutflow&by=year&component=tank" });
  assert.deepEqual(await tab.texts("#series .keys bdi"), ["tank:overflow", "mains:outflow"]);
  assert.equal(await tab.text("#series .switcher [aria-pressed=true]"), "Year");
  assert.equal(await tab.text("#network .details h3"), "tank");
  const link = await tab.run(() => location.hash);
  await tab.click("Day", "#series");
  assert.notEqual(await tab.run(() => location.hash), link);
  // Followed within the page that is open.
  await tab.run(hash => { location.hash = hash; }, "#series=tank%3Astorage&by=month");
  await tab.settle();
  assert.deepEqual(await tab.texts("#series .keys bdi"), ["tank:storage"]);
  await tab.close();
}));

test("what is seen is saved as CSV and PNG", { skip: !charts }, () => withBrowser(async browser => {
  const tab = await browser.open(file, { hash: "#series=tank%3Aoverflow&series=garden%3Ademand&by=month" });
  const session = await tab.page.createCDPSession();
  await session.send("Browser.setDownloadBehavior", { behavior: "allow", downloadPath: folder });
  const saved = async name => {
    for (let i = 0; i < 100; ++i) {
      if (fs.existsSync(path.join(folder, name)) && fs.statSync(path.join(folder, name)).size) return fs.readFileSync(path.join(folder, name));
      await new Promise(done => setTimeout(done, 50));
    }
    return assert.fail(`${name} was not saved`);
  };
  await tab.click("Save CSV", "#series");
  const rows = (await saved("House-with-a-rainwater-tank-series.csv")).toString().trim().split("\n");
  assert.equal(rows[0], "month,tank:overflow [L per month],garden:demand [L per month]");
  assert.equal(rows.length, 49);
  assert.match(rows[7], /^2012-07,/);
  const total = rows.slice(1).reduce((sum, row) => sum + Number(row.split(",")[2]), 0);
  assert.ok(Math.abs(total - 18007.2) < 1, `${total} L of garden:demand`);
  await tab.click("Save PNG", "#series");
  const png = await saved("House-with-a-rainwater-tank-series.png");
  assert.deepEqual([...png.subarray(1, 4)], [..."PNG"].map(letter => letter.charCodeAt(0)));
  await tab.close();
}));

test("a year is as long as it is, the last one, too", { skip: !charts }, () => withBrowser(async browser => {
  const tab = await browser.open(file, { hash: "#series=tank%3Aoverflow&by=year" });
  const plot = await tab.page.$("#series .u-over");
  await plot.scrollIntoView();
  const box = await plot.boundingBox();
  for (const [share, year] of [[0.01, "2012"], [0.24, "2012"], [0.26, "2013"], [0.7, "2014"], [0.76, "2015"], [0.99, "2015"]]) {
    await tab.page.mouse.move(box.x + share * box.width, box.y + box.height / 2);
    assert.equal(await tab.text("#series .when"), year);
  }
  await tab.close();
}));

test("stripes are the days that they say, in leap years and others", () => withBrowser(async browser => {
  const tab = await browser.open(file);
  const strips = await tab.page.$$("#stores .strips canvas");
  assert.equal(strips.length, 4);
  // Each row has a place for 29 February, the 60th.
  for (const [row, place, day] of [[0, 59, "29 February 2012"], [0, 60, "1 March 2012"], [1, 58, "28 February 2013"], [1, 60, "1 March 2013"],
    [3, 0, "1 January 2015"], [3, 365, "31 December 2015"]]) {
    await strips[row].scrollIntoView();
    const box = await strips[row].boundingBox();
    await tab.page.mouse.move(box.x + box.width * (place + 0.5) / 366, box.y + box.height / 2);
    assert.equal(await tab.text(".hint strong"), day);
  }
  await tab.close();
}));

test("texts of the axes lie within the chart", { skip: !charts }, () => withBrowser(async browser => {
  const tab = await browser.open(file, { width: 480 });
  // A text that is cut off has ink in the outermost rows and columns of points.
  const cut = await tab.page.$$eval("#series canvas, #stores .chart canvas", nodes => nodes.map(canvas => {
    const pen = canvas.getContext("2d"), { width, height } = canvas;
    const ink = (x, y, w, h) => pen.getImageData(x, y, w, h).data.filter((value, i) => i % 4 === 3 && value > 40).length;
    return ink(0, 0, 1, height) + ink(0, height - 1, width, 1);
  }));
  assert.ok(cut.length > 0);
  assert.deepEqual(cut, cut.map(() => 0));
  await tab.close();
}));
