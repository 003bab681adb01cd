// Pages of several runs, and of a sweep.
import assert from "node:assert/strict";
import path from "node:path";
import { test } from "node:test";
import { few, looksRight, withBrowser } from "./browser.mjs";
import { changed, charts, comparison, folder, failingSweep, hostile, sweep, tableSweep } from "./runs.mjs";

const four = comparison();

test("four runs side by side", () => withBrowser(async browser => {
  await looksRight(browser, four, { all: few });
  const tab = await browser.open(four);
  const made = await tab.texts("#made dt");
  assert.deepEqual(made.slice(0, 3), ["Version", "Model", "SHA-256"]);
  assert.equal(made.filter(text => text.startsWith("Options of tank of ")).length, 4);
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

test("runs of different size", () => withBrowser(async browser => {
  const file = changed(four, "sizes", data => {
    data.figures.unshift({ name: "network.small", unit: "L", values: [38176.5e6, 265560, 0.3, 0] });
    data.overlays = [];
    data.runs[1].set = ["a_long_name_of_a_component.initial_storage=500 m3"];
  });
  const tab = await browser.open(file, { width: 400 });
  const cells = (await tab.text("#figures tbody tr")).split(/\s*\t\s*/);
  assert.match(cells[2], /^38,177/);
  assert.match(cells[3], /^0\.266/);
  assert.match(cells[4], /^3\.00e[-−]7/);
  assert.match(cells[5], /^0\b/);
  assert.match(await tab.text("#overlays"), /There is no series that all of these runs have\.$/);
  // What a run was given has room for some letters on each line.
  assert.ok(await tab.run(() => document.querySelector("#runs td code").getBoundingClientRect().width) > 90);
  assert.ok(await tab.run(() => [...document.querySelectorAll("#runs th, #runs td")].every(cell => cell.scrollWidth <= cell.clientWidth + 1)));
  await tab.fits();
  await tab.picture("400");
  await tab.close();
}));

test("twelve runs", () => withBrowser(async browser => {
  const file = changed(four, "twelve", data => {
    const times = list => Array.from({ length: 12 }, (_, i) => list[i % 4]);
    data.runs = times(data.runs).map((run, i) => ({ ...run, name: `run ${i + 1}`, set: ["tank.size=500", "roof.size=60"] }));
    for (const row of data.figures) row.values = times(row.values);
    for (const row of data.overlays) for (const key of ["values", "firsts"]) row[key] = times(row[key]);
  });
  await looksRight(browser, file, { all: [400, 480] });
  const tab = await browser.open(file, { width: 480 });
  assert.deepEqual(await tab.texts("#figures caption"), ["Figures of runs 1 and 2 to 5", "Figures of runs 1 and 6 to 9", "Figures of runs 1 and 10 to 12"]);
  await tab.accessible();
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
  assert.deepEqual(await tab.texts("#made dt"), ["Version", "Model", "SHA-256", "Design", "Options", "Read"]);
  assert.match((await tab.texts("#made dd"))[3], /24 members [0-9a-f]{64}/);
  // A curve over the sizes of the tank for each of three roofs.
  assert.deepEqual(await tab.texts("#sweep .keys li"), ["roof.size = 40 m²", "roof.size = 60 m²", "roof.size = 100 m²"]);
  assert.ok((await tab.coloured("#sweep"))[0] > 300);
  await tab.page.select("#sweep label:nth-of-type(1) select", "1");
  await tab.settle();
  assert.match(await tab.page.$eval("#sweep .chart", node => node.getAttribute("aria-label")), /by roof\.size, 24 members/);
  await tab.click("As a table", "#sweep");
  assert.equal((await tab.page.$$("#sweep tbody tr")).length, 24);
  await tab.accessible();
  await tab.close();
}));

const said = tab => tab.page.$eval("#sweep .chart", node => node.getAttribute("aria-label"));
const choose = async (tab, label, text) => {
  await tab.run((wanted, option) => {
    const select = [...document.querySelectorAll("#sweep .controls label")].find(node => node.firstChild.textContent === wanted).querySelector("select");
    select.value = [...select.options].find(one => one.text === option).value;
    select.onchange();
  }, label, text);
  await tab.settle();
};

// Halton's sequence: each member has a tank and a roof of its own.
const halton = (i, base) => i ? (i % base + halton(Math.floor(i / base), base)) / base : 0;

test("members that differ in two keys are points, coloured by classes", { skip: !charts }, () => withBrowser(async browser => {
  const file = tableSweep("spread", ["tank.size,roof.size", ...Array.from({ length: 40 }, (_, i) =>
    `${Math.round(500 + 7000 * halton(i + 1, 2))},${Math.round(20 + 180 * halton(i + 1, 3))}`)]);
  await looksRight(browser, file, { all: [400, 1280] });
  const tab = await browser.open(file);
  assert.match(await said(tab), /network\.mains by tank\.size, 40 members as points/);
  const classes = await tab.texts("#sweep .keys li");
  assert.equal(classes.length, 5);
  // From little to much, each class above the one before.
  const ends = classes.map(text => /^roof\.size = ([\d.]+) to ([\d.]+) m²$/.exec(text).slice(1).map(Number)).flat();
  assert.deepEqual(ends, [...ends].sort((a, b) => a - b));
  const inked = async () => (await tab.coloured("#sweep"))[0];
  const byClass = await inked();
  assert.ok(byClass > 300);
  await choose(tab, "Colours", "none");
  assert.match(await said(tab), /as points/);
  assert.deepEqual(await tab.texts("#sweep .keys li"), []);
  // Nearly the same points, and no lines between them.
  assert.ok(await inked() < 2.5 * byClass);
  await tab.close();
}));

test("sizes in several units stand where they belong", { skip: !charts }, () => withBrowser(async browser => {
  const tab = await browser.open(tableSweep("units", ["tank.size", "1 m3", "3 m3", "800 L", "2000"]));
  assert.match(await said(tab), /by tank\.size, 4 members as curves/);
  assert.deepEqual((await tab.texts("#sweep thead th")).slice(0, 2), ["member", "tank.size [m³]"]);
  assert.deepEqual(await tab.texts("#sweep tbody td:nth-child(2)"), ["1", "3", "0.8", "2"]);
  await tab.close();
  const names = await browser.open(changed(path.join(folder, "units.html"), "texts", data => {
    Object.assign(data.sweep.keys[0], { name: "scenario", unit: "", values: ["run 10", "run 9", "", "run 9 b"] });
  }));
  assert.match(await said(names), /by scenario, 4 members as points/);
  assert.deepEqual(await names.texts("#sweep tbody td:nth-child(2)"), ["run 10", "run 9", "as in the model", "run 9 b"]);
  await names.close();
}));

test("a sweep of which members failed", { skip: !charts }, () => withBrowser(async browser => {
  const file = failingSweep();
  await looksRight(browser, file, { all: [400] });
  const tab = await browser.open(file);
  assert.match(await tab.text("#alarm"), /^2 of 3 members did not finish\. They have no figures \(2 failed\)\.\s+Member 1: Infeasibility/);
  assert.match(await tab.text("#alarm"), /, failed\.toml:14:8\)/);
  assert.equal(await tab.text("#sweep .missing"), "Not in the chart: 2 members did not finish.");
  assert.deepEqual(await tab.texts("#sweep tbody td:nth-child(3)"), ["failed", "finished", "failed"]);
  await tab.close();
}));

test("ticks have the digits of their steps", { skip: !charts }, () => withBrowser(async browser => {
  const tab = await browser.open(changed(path.join(folder, "units.html"), "ticks", data => {
    Object.assign(data.sweep.figures[0], { name: "some", unit: "", values: [369.6, 357.1, 373.6, 361.5] });
  }));
  // Drawn on a canvas, whose texts are caught as they are written.
  const texts = await tab.run(async () => {
    const written = [], draw = CanvasRenderingContext2D.prototype.fillText;
    CanvasRenderingContext2D.prototype.fillText = function (text, ...rest) { written.push(text); draw.call(this, text, ...rest); };
    const select = document.querySelectorAll("#sweep select")[1];
    select.value = "0";
    select.onchange();
    await new Promise(done => setTimeout(done, 60));
    return written;
  });
  const ticks = texts.filter(text => /^3[5-7]\d/.test(text)).map(Number), step = ticks[1] - ticks[0];
  assert.ok(ticks.length > 3, texts.join());
  ticks.slice(1).forEach((tick, i) => assert.ok(Math.abs(tick - ticks[i] - step) < 1e-9, ticks.join()));
  await tab.close();
}));
