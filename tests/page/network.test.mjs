// The network of a page: the drawing, a component and what is around it, and back.
import assert from "node:assert/strict";
import { test } from "node:test";
import { few, looksRight, withBrowser } from "./browser.mjs";
import { charts, house, town } from "./runs.mjs";

const small = house(), large = town();

test("a click on a component shows it, and a button leads back", () => withBrowser(async browser => {
  const tab = await browser.open(small, { width: 1600 });
  const at = await tab.page.$$eval("#network svg.graphviz [id^=n]", nodes => nodes.length);
  assert.equal(at, 13);
  const tank = await tab.run(() => [...document.querySelectorAll("#network svg.graphviz [id^=n]")].find(node => /\btank\b/.test(node.textContent)).id);
  await tab.page.click(`#network [id="${tank}"] text`);
  await tab.settle();
  assert.equal(await tab.text("#network .details h3"), "tank");
  assert.match(await tab.text("#network .details"), /Gets from[\s\S]*roof[\s\S]*Sends to[\s\S]*mains/);
  assert.match(await tab.run(() => location.hash), /component=tank/);
  assert.ok(await tab.run(id => document.getElementById(id).classList.contains("chosen"), tank));
  if (charts) {
    await tab.click("Neighbourhood", "#network");
    assert.ok((await tab.texts("#network svg.boxes .box")).length > 3);
    await tab.click("All components", "#network");
    await tab.page.click(`#network [id="${tank}"] text`);
    await tab.settle();
    const button = await tab.run(() => [...document.querySelectorAll("#network .details button")].map(node => node.textContent).find(text => /^Show its/.test(text)));
    await tab.click(button, "#network");
    assert.ok((await tab.texts("#series .keys bdi")).every(name => name.startsWith("tank:")));
  }
  await tab.accessible();
  await tab.click("Close", "#network");
  assert.equal((await tab.page.$$("#network .details h3")).length, 0);
  await tab.close();
}));

test("the view pans and zooms with keys and buttons", () => withBrowser(async browser => {
  const tab = await browser.open(small);
  const box = () => tab.page.$eval("#network .frame svg", node => node.getAttribute("viewBox").split(" ").map(Number));
  const before = await box();
  await tab.click("Zoom in", "#network");
  assert.ok((await box())[2] < before[2]);
  await tab.page.focus("#network .frame");
  await tab.page.keyboard.press("ArrowRight");
  assert.ok((await box())[0] > before[0]);
  await tab.page.keyboard.press("0");
  assert.deepEqual((await box()).map(Math.round), before.map(Math.round));
  const frame = await (await tab.page.$("#network .frame")).boundingBox();
  await tab.page.mouse.move(frame.x + 40, frame.y + 40);
  await tab.page.mouse.down();
  await tab.page.mouse.move(frame.x + 140, frame.y + 60, { steps: 4 });
  await tab.page.mouse.up();
  assert.ok((await box())[0] < before[0]);
  await tab.close();
}));

test("demand and water are told apart without colours", () => withBrowser(async browser => {
  const tab = await browser.open(small);
  const dashed = await tab.page.$$eval("#network svg.graphviz .edge path", nodes => nodes.filter(node => node.getAttribute("stroke-dasharray")).length);
  assert.equal(dashed, 9);
  await tab.close();
}));

test("the town looks right, and its groups open", () => withBrowser(async browser => {
  await looksRight(browser, large, { all: few });
  const tab = await browser.open(large);
  if (charts) {
    await tab.click("Groups", "#network");
    const boxes = await tab.texts("#network svg.boxes .box .name");
    assert.ok(boxes.length > 5);
    await tab.page.$$eval("#network svg.boxes .box", nodes => nodes.find(node => /^mill/.test(node.textContent)).dispatchEvent(new MouseEvent("click", { bubbles: true })));
    await tab.settle();
    assert.match(await tab.text("#network .path"), /All groups › mill/);
    assert.ok((await tab.texts("#network svg.boxes .box .name")).includes("toilet_mill"));
    await tab.accessible();
    await tab.click("All groups", "#network");
  }
  await tab.page.type("#network input[type=search]", "toilet_m");
  await tab.run(() => document.querySelector("#network .found button").click());
  await tab.settle();
  assert.equal(await tab.text("#network .details h3"), "toilet_mill");
  await tab.close();
}));
