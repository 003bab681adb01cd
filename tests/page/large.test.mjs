// A page does not grow with the network: 6,000 households of ten components with KESTO_TEST_LONG=1, else 600.
import assert from "node:assert/strict";
import fs from "node:fs";
import { test } from "node:test";
import { few, long, looksRight, withBrowser } from "./browser.mjs";
import { charts, households } from "./runs.mjs";

const kCount = long ? 6000 : 600;

test(`${kCount} households`, () => withBrowser(async browser => {
  const file = households(kCount), size = fs.statSync(file).size;
  assert.ok(size < 5e6, `${size} bytes`);
  await looksRight(browser, file, { all: few });
  const tab = await browser.open(file);
  assert.ok(tab.usable < 2000, `usable after ${tab.usable} ms`);
  const elements = await tab.run(() => document.querySelectorAll("*").length);
  assert.ok(elements < 5000, `${elements} elements`);
  const height = await tab.run(() => document.documentElement.scrollHeight);
  assert.ok(height < 9000, `${height} pixels high`);
  if (charts) {
    assert.ok((await tab.texts("#network svg.boxes .box")).length <= 42);
    await tab.page.$$eval("#network svg.boxes .box", nodes => nodes[0].dispatchEvent(new MouseEvent("click", { bubbles: true })));
    await tab.settle();
    await tab.accessible();
  }
  const start = Date.now();
  await tab.page.type("#network input[type=search]", `tank${kCount - 1}`);
  assert.deepEqual(await tab.texts("#network .found bdi"), [`tank${kCount - 1}`]);
  assert.ok(Date.now() - start < 2000);
  await tab.run(() => document.querySelector("#network .found button").click());
  await tab.settle();
  assert.match(await tab.text("#network .details"), new RegExp(`house${kCount - 1}`));
  if (charts) assert.ok((await tab.texts("#network svg.boxes .box .name")).includes(`roof${kCount - 1}`));
  await tab.close();
}));
