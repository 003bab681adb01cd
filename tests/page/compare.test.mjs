// Pages of several runs, and of a sweep.
import assert from "node:assert/strict";
import path from "node:path";
import { test } from "node:test";
import { few, looksRight, withBrowser } from "./browser.mjs";
import { changed, charts, comparison, folder, hostile, sweep } from "./runs.mjs";

const four = comparison();

test("four runs side by side", () => withBrowser(async browser => {
  await looksRight(browser, four, { all: few });
  const tab = await browser.open(four);
  assert.deepEqual(await tab.texts("#runs tbody th"), ["tank of 1 m3", "tank of 2 m3", "tank of 5 m3", "tank of 0.5 m3"]);
  // 369.6 m³ with 1 m³ of tank, 349.1 with 5.
  const mains = (await tab.texts("#figures tbody tr")).find(text => text.startsWith("network.mains"));
  assert.match(mains, /m³\s+369\.6\s+361\.5\s+−8\.1 \(−2\.2 %\)\s+349\.1\s+−20\.5 \(−5\.5 %\)\s+382\.3/);
  const share = (await tab.texts("#figures tbody tr")).find(text => text.startsWith("tank.reliability_volume"));
  assert.match(share, /%\s+71\.9\s+78\.1\s+\+6\.2 points/);
  const rows = (await tab.page.$$("#figures tbody tr")).length;
  await tab.run(() => document.querySelector("#figures input[type=checkbox]").click());
  assert.ok((await tab.page.$$("#figures tbody tr")).length > rows);
  await tab.page.type("#figures input[type=search]", "unmet_jul");
  assert.equal((await tab.page.$$("#figures tbody tr")).length, 1);
  if (charts) {
    assert.ok((await tab.coloured("#overlays"))[0] > 300);
    const label = await tab.page.$eval("#overlays .chart", node => node.getAttribute("aria-label"));
    await tab.page.select("#overlays select", "1");
    await tab.settle();
    assert.notEqual(await tab.page.$eval("#overlays .chart", node => node.getAttribute("aria-label")), label);
    assert.equal((await tab.texts("#overlays .keys li")).length, 4);
  }
  await tab.pdf(path.join(folder, "comparison.pdf"));
  await tab.close();
}));

test("runs of any name", () => withBrowser(async browser => {
  const names = [hostile[1], hostile[4], hostile[2], hostile[8]];
  const file = changed(four, "hostile-runs", data => data.runs.forEach((run, i) => Object.assign(run, { name: names[i], set: [`a=${names[i]}`] })));
  await looksRight(browser, file, { all: [400, 1280] });
  const tab = await browser.open(file);
  assert.equal(await tab.text("#runs tbody th"), names[0]);
  assert.equal((await tab.page.$$("main img, main script")).length, 0);
  await tab.close();
}));

test("a sweep by what it varies", { skip: !charts }, () => withBrowser(async browser => {
  const file = sweep();
  await looksRight(browser, file, { all: few });
  const tab = await browser.open(file);
  assert.match(await tab.text("#lead"), /24 members over tank\.size, roof\.size/);
  // A curve over the sizes of the tank for each of three roofs.
  assert.deepEqual(await tab.texts("#sweep .keys li"), ["roof.size = 40", "roof.size = 60", "roof.size = 100"]);
  assert.ok((await tab.coloured("#sweep"))[0] > 300);
  await tab.page.select("#sweep label:nth-of-type(1) select", "1");
  await tab.settle();
  assert.match(await tab.page.$eval("#sweep .chart", node => node.getAttribute("aria-label")), /by roof\.size, 24 members/);
  await tab.click("As a table", "#sweep");
  assert.equal((await tab.page.$$("#sweep tbody tr")).length, 24);
  await tab.accessible();
  await tab.close();
}));
