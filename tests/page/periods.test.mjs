// Runs that begin or end within a month, of a day, of a year, and in steps of two days.
import assert from "node:assert/strict";
import fs from "node:fs";
import path from "node:path";
import { test } from "node:test";
import { looksRight, withBrowser } from "./browser.mjs";
import { charts, examples, folder, office, page } from "./runs.mjs";

const model = path.join(examples, "rainwater-house/model.toml");
const part = (name, from, to) => page(name, model, { options: ["--from", from, "--to", to] });
const listed = (tab, name) => tab.page.$$eval("#series .items li", (nodes, wanted) =>
  nodes.find(node => node.querySelector("bdi").textContent === wanted).querySelector(".total").textContent, name);

// The mean of a column of states.csv.
function meanOf(results, header) {
  const [head, ...rows] = fs.readFileSync(path.join(folder, results, "states.csv"), "utf8").trim().split("\n").map(row => row.split(","));
  return rows.reduce((sum, row) => sum + Number(row[head.indexOf(header)]), 0) / rows.length;
}

// Points without ink that the outermost text of the axis beneath a chart has to its right.
const roomAtTheRight = (tab, selector) => tab.page.$eval(`${selector} canvas`, canvas => {
  const { width, height } = canvas, from = Math.floor(height * 0.86);
  const { data } = canvas.getContext("2d").getImageData(0, from, width, height - from);
  let last = 0;
  for (let i = 0; i < data.length; i += 4) if (data[i + 3] > 40) last = Math.max(last, (i / 4) % width);
  return width - 1 - last;
});

test("the mean of a store is that of its days, whatever the length of its months", { skip: !charts }, () => withBrowser(async browser => {
  const tab = await browser.open(part("july", "2012-07-01", "2012-08-01"));
  const mean = meanOf("july-results", "tank:storage [L]");
  assert.equal(await listed(tab, "tank:storage"), `mean ${mean.toFixed(1)} L`);
  await tab.close();
}));

test("a month that was run in part is marked", () => withBrowser(async browser => {
  const file = part("turn", "2012-12-01", "2013-01-10");
  await looksRight(browser, file, { all: [400, 1280] });
  const tab = await browser.open(file);
  assert.equal((await tab.page.$$("#months .part")).length, 1);
  assert.match(await tab.text("#months"), /\* Only a part of this month was run\./);
  await tab.click("As a table", "#months");
  assert.deepEqual(await tab.texts("#months tbody th"), ["December 2012", "January 2013*"]);
  if (charts) {
    await tab.click("Month", "#series");
    assert.match(await tab.text("#series"), /Of January 2013 only a part was run\./);
  }
  await tab.close();
}));

test("one day is told and drawn as one day", () => withBrowser(async browser => {
  const file = part("one-day", "2012-02-29", "2012-02-29");
  await looksRight(browser, file, { all: [400, 1280] });
  const tab = await browser.open(file);
  assert.match(await tab.text("#lead"), /Seattle · 29 February 2012 · /);
  if (charts) {
    assert.match(await tab.text("#paths"), /Sum of the period, 29 February 2012;/);
    for (const selector of ["#stores", "#series"]) {
      const plot = await tab.page.$(`${selector} .u-over`);
      await plot.scrollIntoView();
      const box = await plot.boundingBox();
      // The only point lies in the middle, with a day around it.
      const marks = await tab.page.$eval(`${selector} canvas`, canvas => {
        const { width, height } = canvas, pen = canvas.getContext("2d");
        const { data } = pen.getImageData(0, 0, width, height);
        const found = [];
        for (let i = 0; i < data.length; i += 4) {
          if (data[i + 3] > 128 && Math.max(data[i], data[i + 1], data[i + 2]) - Math.min(data[i], data[i + 1], data[i + 2]) > 100) found.push((i / 4) % width / width);
        }
        return [Math.min(...found), Math.max(...found)];
      });
      assert.ok(box.width > 100 && marks[0] > 0.4 && marks[1] < 0.65, `${selector}: ${marks}`);
    }
  }
  await tab.close();
}));

test("a run of one year has an axis of one year, and no label is cut", { skip: !charts }, () => withBrowser(async browser => {
  const year = await browser.open(office(), { hash: "#by=year" });
  assert.ok(await roomAtTheRight(year, "#series") >= 2);
  await year.close();
  const days = await browser.open(part("three", "2012-03-01", "2012-03-03"));
  for (const selector of ["#stores", "#series"]) assert.ok(await roomAtTheRight(days, selector) >= 2, selector);
  await days.close();
}));

test("dates that are the wrong way round are put in order", { skip: !charts }, () => withBrowser(async browser => {
  const file = part("summer", "2012-05-01", "2012-09-30");
  const dates = tab => tab.page.$$eval("#series input[type=date]", nodes => nodes.map(node => node.value));
  const linked = await browser.open(file, { hash: "#from=2012-08-01&to=2012-06-10" });
  assert.deepEqual(await dates(linked), ["2012-06-10", "2012-08-01"]);
  assert.match(await linked.run(() => location.hash), /from=2012-06-10&to=2012-08-01/);
  await linked.close();
  const tab = await browser.open(file);
  const give = (at, value) => tab.page.$$eval("#series input[type=date]", (nodes, i, text) => {
    nodes[i].focus();
    nodes[i].value = text;
    nodes[i].dispatchEvent(new Event("change", { bubbles: true }));
  }, at, value);
  await give(0, "2012-08-01");
  await give(1, "2012-06-10");
  await tab.run(() => document.activeElement.blur());
  await tab.settle();
  assert.deepEqual(await dates(tab), ["2012-06-10", "2012-08-01"]);
  assert.match(await tab.run(() => location.hash), /from=2012-06-10&to=2012-08-01/);
  // A single day, and dates of another year.
  for (const [hash, shown] of [["#from=2012-07-04&to=2012-07-04", ["2012-07-04", "2012-07-04"]], ["#from=1999-01-01&to=1999-02-01", ["2012-05-01", "2012-09-30"]]]) {
    const other = await browser.open(file, { hash });
    assert.deepEqual(await dates(other), shown);
    await other.close();
  }
  await tab.close();
}));

test("steps that are no days are called steps, under the dates of the calendar", () => withBrowser(async browser => {
  const text = fs.readFileSync(model, "utf8").replace("[simulation]", "[simulation]\ntime_step = 2");
  fs.copyFileSync(path.join(examples, "rainwater-house/weather.csv"), path.join(folder, "weather.csv"));
  fs.writeFileSync(path.join(folder, "steps.toml"), text);
  const file = page("steps", path.join(folder, "steps.toml"));
  await looksRight(browser, file, { all: [400, 1280] });
  const tab = await browser.open(file);
  assert.match(await tab.text("#lead"), /1 January 2012 to 31 December 2015 · steps of 2 days, each with one date · /);
  const said = await tab.text("main");
  assert.doesNotMatch(said, /2019|per day|a day\b|per person and day|Each day|days empty|Days on which/);
  assert.match(await tab.text("#figures"), /L per person and step\s+\S+ L a step for 2\.46 persons/);
  assert.match(await tab.text("#figures"), /% of the steps with a demand/);
  assert.match(await tab.text("#paths"), /Sum of the period, 1 January 2012 to 31 December 2015;/);
  assert.match(await tab.text("#stores"), /steps empty/);
  await tab.close();
}));
