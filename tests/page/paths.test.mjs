// The flow diagram: whatever the names and the width, no two labels touch.
import assert from "node:assert/strict";
import { test } from "node:test";
import { widths, withBrowser } from "./browser.mjs";
import { changed, charts, hostile, house, office } from "./runs.mjs";

const skip = !charts, file = house();

const node = (id, label, kind) => ({ id, label, kind, components: 1 });
const link = (from, to, litres) => ({ from, to, litres });

function withPaths(name, nodes, links) {
  for (const one of nodes) {
    const sum = side => links.reduce((total, each) => total + (each[side] === one.id ? each.litres : 0), 0);
    one.litres = Math.max(sum("from"), sum("to"));
  }
  return changed(file, name, data => { data.paths = { years: 4, nodes, links }; });
}

async function apart(page) {
  await withBrowser(async browser => {
    const tab = await browser.open(page, { width: widths[0] });
    for (const width of [...widths, 719, 720]) {
      await tab.resize(width);
      await tab.labelsStandApart();
      await tab.fits();
    }
    await tab.close();
  });
}

test("names of any length and script, and many small sinks", { skip }, async () => {
  const sinks = hostile.map((label, i) => node(`sink${i}`, label, "sink"));
  await apart(withPaths("many-sinks", [node("mains", hostile[4], "source"), node("rain", hostile[8], "source"), node("tank", hostile[7], "store"),
    node("use", hostile[2], "use"), ...sinks],
  [link("mains", "use", 4e5), link("rain", "tank", 2e5), link("tank", "use", 1e5), link("tank", "sink0", 1e5), ...sinks.map((one, i) => link("use", one.id, i ? 3 ** i : 4.9e5))]));
});

test("water that is used again returns beneath", { skip }, async () => {
  const page = withPaths("reuse", [node("mains", "Mains", "source"), node("use", "Office", "use"), node("works", "Greywater plant", "works"),
    node("tank", "Tank of treated water", "store"), node("sewer", "Sewer", "sink")],
  [link("mains", "use", 3e5), link("use", "works", 2e5), link("works", "tank", 1.9e5), link("tank", "use", 1.8e5), link("use", "sewer", 2.8e5),
   link("works", "sewer", 1e4), link("tank", "sewer", 1e4)]);
  await apart(page);
  await withBrowser(async browser => {
    const tab = await browser.open(page);
    assert.equal((await tab.page.$$("#paths .band")).length, 7);
    await tab.picture("reuse");
    await tab.close();
  });
});

test("sources that the months do not tell apart are named beneath them", () => withBrowser(async browser => {
  assert.doesNotMatch(await textOf(browser, file), /Other sources/);
  const page = changed(file, "other-sources", data => { Object.assign(data.months.series[1], { label: "Other sources", kind: "other" }); });
  assert.match(await textOf(browser, page), /Other sources: \u2068Rain on roof\u2069\./);
}));

// The points of a column of a picture, from white 255 to black 0, darkest first.
async function darkest(tab, fromRight) {
  const shot = await (await tab.page.$("#paths .scrolled")).screenshot({ encoding: "base64" });
  return tab.run(async (image, at) => {
    const picture = await createImageBitmap(await (await fetch(`data:image/png;base64,${image}`)).blob());
    const pen = new OffscreenCanvas(picture.width, picture.height).getContext("2d");
    pen.drawImage(picture, 0, 0);
    // The topmost row lies above all bands.
    return Math.min(...pen.getImageData(picture.width - at, 0, 1, 1).data);
  }, shot, fromRight);
}

test("a diagram that is wider than its place shows where there is more", { skip }, () => withBrowser(async browser => {
  const tab = await browser.open(office(), { width: 400 });
  await tab.page.setBypassCSP(true);
  await tab.page.reload();
  await tab.settle();
  assert.ok(await darkest(tab, 4) < 235);
  await tab.run(() => { document.querySelector("#paths .scrolled").scrollLeft = 9999; });
  await tab.settle();
  assert.equal(await darkest(tab, 4), 255);
  await tab.page.close();
}));

async function textOf(browser, page) {
  const tab = await browser.open(page), text = await tab.text("#months");
  await tab.close();
  return text;
}

test("one source, one sink", { skip }, () => apart(withPaths("one-link", [node("a", "Rain", "source"), node("b", "River", "sink")], [link("a", "b", 12)])));
