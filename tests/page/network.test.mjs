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
  assert.match(await tab.text("#network .details"), /Gets from\s+roof:runoff → inflow\s+water, 225\.7 m³\s[\s\S]*Sends to\s+deficit → mains:inflow\s+demand, 31\.2 m³/);
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

test("two fingers pan and zoom the view, one scrolls the page", () => withBrowser(async browser => {
  const tab = await browser.open(small, { width: 480 });
  const session = await tab.page.createCDPSession();
  await session.send("Emulation.setTouchEmulationEnabled", { enabled: true, maxTouchPoints: 2 });
  await (await tab.page.$("#network .frame")).scrollIntoView();
  const frame = await (await tab.page.$("#network .frame")).boundingBox(), y = frame.y + frame.height / 2;
  const box = () => tab.page.$eval("#network .frame svg", node => node.getAttribute("viewBox").split(" ").map(Number));
  const drag = async (...places) => {
    for (const [index, xs] of places.entries()) {
      const type = index === 0 ? "touchStart" : "touchMove";
      await session.send("Input.dispatchTouchEvent", { type, touchPoints: xs.map((x, id) => ({ x: frame.x + x, y, id })) });
    }
    await session.send("Input.dispatchTouchEvent", { type: "touchEnd", touchPoints: [] });
    await tab.settle();
    return box();
  };
  const near = (found, expected) => found.forEach((value, i) => assert.ok(Math.abs(value - expected[i]) < 0.5, `${found}, not ${expected}`));
  const whole = await box(), perPixel = whole[2] / frame.width;
  near(await drag([100, 200], [130, 230], [140, 240]), [whole[0] - 40 * perPixel, ...whole.slice(1)]);
  const [x, top, width, height] = await box();
  // Apart by twice as much, about the place 100 pixels from the left.
  near(await drag([50, 150], [25, 175], [0, 200]), [x + 50 * perPixel, top + height / 4, width / 2, height / 2]);
  const zoomed = await box();
  near(await drag([100], [150]), zoomed);
  await tab.close();
}));

// The names of the buttons in a picture, as a screen reader tells them, in the order of the keyboard.
async function buttonNames(tab, selector) {
  const names = [];
  const collect = node => {
    if (node.role === "button") names.push(node.name);
    node.children?.forEach(collect);
  };
  collect(await tab.page.accessibility.snapshot({ root: await tab.page.$(selector), interestingOnly: false }));
  return names;
}

const focused = tab => tab.run(() => {
  const node = document.activeElement;
  return (node.querySelector("text[font-weight]") ?? node).textContent.trim();
});

test("components are reached, read and opened with the keyboard alone", () => withBrowser(async browser => {
  const tab = await browser.open(small, { width: 1600 }), { keyboard } = tab.page;
  const names = await buttonNames(tab, "#network svg.graphviz");
  assert.equal(names.length, 13);
  assert.ok(names.some(name => /^tank tank$/.test(name)), names.join("; "));
  await tab.page.focus("#network .frame");
  const seen = new Set();
  for (let i = 0; i < 13; ++i) {
    await keyboard.press("Tab");
    seen.add(await focused(tab));
  }
  assert.equal(seen.size, 13);
  const last = await focused(tab), looks = () => tab.run(() => getComputedStyle(document.activeElement.querySelector("path")).strokeWidth);
  assert.equal(await looks(), "4px");
  await keyboard.press("Enter");
  await tab.settle();
  assert.equal(await tab.text("#network .details h3"), last);
  assert.equal(await focused(tab), "Close");
  await keyboard.press("Enter");
  assert.equal((await tab.page.$$("#network .details h3")).length, 0);
  assert.equal(await focused(tab), last);
  await keyboard.press("Space");
  assert.equal(await tab.text("#network .details h3"), last);
  // Whoever does not want to go through all of them need not.
  await tab.page.focus("#network .skip");
  const skip = await (await tab.page.$("#network .skip")).boundingBox();
  assert.ok(skip.x > 0 && skip.width > 40, "it is seen while it has the focus");
  await keyboard.press("Enter");
  assert.equal(await focused(tab), "Components as a list");
  await tab.close();
}));

test("what the keyboard reaches beyond the frame comes into sight", () => withBrowser(async browser => {
  const tab = await browser.open(small, { width: 1600 });
  for (let i = 0; i < 6; ++i) await tab.click("Zoom in", "#network");
  await tab.page.focus("#network .frame");
  for (let i = 0; i < 13; ++i) {
    await tab.page.keyboard.press("Tab");
    assert.ok(await tab.run(() => {
      const part = document.activeElement.getBoundingClientRect(), frame = document.querySelector("#network .frame").getBoundingClientRect();
      const x = (part.left + part.right) / 2, y = (part.top + part.bottom) / 2;
      return x > frame.left && x < frame.right && y > frame.top && y < frame.bottom;
    }), `${await focused(tab)} is out of sight`);
  }
  await tab.close();
}));

test("groups are opened with the keyboard, and it stays in the picture", { skip: !charts }, () => withBrowser(async browser => {
  const tab = await browser.open(large), { keyboard } = tab.page;
  await tab.click("Groups", "#network");
  assert.ok((await buttonNames(tab, "#network svg.boxes")).some(name => /^mill 11 components 7 × appliance/.test(name)));
  await tab.run(() => [...document.querySelectorAll("#network svg.boxes .box")].find(node => /^mill/.test(node.textContent)).focus());
  await keyboard.press("Enter");
  await tab.settle();
  assert.match(await tab.text("#network .path"), /All groups › mill/);
  assert.ok(await tab.run(() => document.activeElement.matches("#network .frame")));
  await keyboard.press("Tab");
  await keyboard.press("Space");
  await tab.settle();
  assert.ok((await tab.text("#network .details h3")).length > 0);
  await tab.close();
}));

test("a drag that ends on a component does not open it", () => withBrowser(async browser => {
  const tab = await browser.open(small, { width: 1600 });
  const node = await tab.page.$("#network svg.graphviz [id=n0]");
  await node.scrollIntoView();
  const box = await node.boundingBox(), x = box.x + box.width / 2, y = box.y + box.height / 2;
  await tab.page.mouse.move(x, y);
  await tab.page.mouse.down();
  await tab.page.mouse.move(x + 60, y, { steps: 3 });
  await tab.page.mouse.up();
  assert.equal((await tab.page.$$("#network .details h3")).length, 0);
  await tab.page.mouse.click(x + 60, y);
  assert.equal((await tab.page.$$("#network .details h3")).length, 1);
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
