// The page on paper: A4, with captions and page numbers, without controls; nothing is cut.
import assert from "node:assert/strict";
import { spawnSync } from "node:child_process";
import fs from "node:fs";
import path from "node:path";
import { test } from "node:test";
import { withBrowser } from "./browser.mjs";
import { charts, folder, house, office, town } from "./runs.mjs";

function words(pdf) {
  return spawnSync("pdftotext", ["-layout", pdf, "-"], { encoding: "utf8" }).stdout.split("\f").filter(page => page.trim());
}

// Width, height and grey values of each page.
function pictures(pdf) {
  const stem = pdf.replace(/\.pdf$/, "");
  assert.equal(spawnSync("pdftoppm", ["-r", "40", "-gray", pdf, stem]).status, 0);
  return fs.readdirSync(path.dirname(stem)).filter(name => name.startsWith(path.basename(stem)) && name.endsWith(".pgm")).sort().map(name => {
    const bytes = fs.readFileSync(path.join(path.dirname(stem), name));
    const [head, width, height] = /^P5\s+(\d+)\s+(\d+)\s+\d+\s/.exec(bytes.toString("latin1", 0, 40));
    return { width: Number(width), height: Number(height), points: bytes.subarray(head.length) };
  });
}

test("costs and accepted warnings", () => withBrowser(async browser => {
  const tab = await browser.open(office());
  assert.equal(await tab.text("#warnings h2"), "Accepted warnings and notes");
  assert.match(await tab.text("#figures"), /Cost of the water used\s+5\.11 EUR\/m³\s+2,476\.24 EUR a year/);
  // One year has the same figures in the flow diagram and in its table.
  const mains = (await tab.texts("#years tbody tr")).find(text => text.startsWith("Mains"));
  assert.match(mains, /m³\s+310\.1/);
  if (charts) assert.ok((await tab.texts("#paths .label text")).includes("310.1 m³"));
  const pdf = path.join(folder, "office-paper.pdf");
  await tab.pdf(pdf);
  // The flow diagram fits the first sheet, beneath the cards.
  if (charts) assert.match(words(pdf)[0], /Figure 1\. Where the water comes from/);
  await tab.close();
}));

for (const [name, make] of [["house", house], ["town", town]]) {
  test(`${name} on paper`, () => withBrowser(async browser => {
    // Printed from the dark, it is light.
    const tab = await browser.open(make(), { dark: true });
    const pdf = path.join(folder, `${name}-paper.pdf`);
    await tab.pdf(pdf);
    const pages = words(pdf), all = pages.join("\n");
    pages.forEach((text, i) => assert.match(text, new RegExp(`Page ${i + 1} of ${pages.length}`)));
    assert.doesNotMatch(all, /Save CSV|Search by name|Drag|Zoom|Fit\b|Choose up to/);
    assert.match(all, /Figure 1\. /);
    if (charts && name === "town") assert.match(all, /\bcompensation\b[\s\S]*Figure 1\. /);  // a node of the flow diagram
    assert.match(all, /How it was made/);
    if (charts) assert.match(all, /The series chosen on the page/);
    for (const { width, height, points } of pictures(pdf)) {
      assert.ok(Math.abs(height / width - Math.SQRT2) < 0.02, `${width} × ${height} is not A4`);
      const edge = Array.from({ length: height }, (_, y) => points[y * width + width - 4]);
      assert.ok(edge.every(grey => grey > 250), "something is cut at the right edge");
      assert.ok(points.reduce((sum, grey) => sum + grey, 0) / points.length > 180, "a page is dark");
    }
    await tab.close();
  }));
}
