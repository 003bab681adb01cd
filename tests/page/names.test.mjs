// Names that look like markup, in other scripts, or longer than a window; and a run that stopped.
import assert from "node:assert/strict";
import { test } from "node:test";
import { few, long, looksRight, widths, withBrowser } from "./browser.mjs";
import { changed, charts, failed, hostile, hostileNames, house } from "./runs.mjs";

test("hostile names are text", () => withBrowser(async browser => {
  const file = hostileNames();
  await looksRight(browser, file, { all: long ? widths : [400, 1280] });
  const tab = await browser.open(file);
  assert.equal(await tab.text("h1"), `${hostile[0]} ${hostile[4]}`);
  assert.equal((await tab.page.$$("main img, main script, header script")).length, 0);
  if (charts) {
    await tab.page.type("#series input[type=search]", hostile[1]);
    assert.ok((await tab.texts("#series .items bdi")).length > 0);
    await tab.run(() => document.querySelector("#series .items input").click());
    await tab.page.type("#network input[type=search]", hostile[4].slice(0, 12));
    await tab.run(() => document.querySelector("#network .found button").click());
    await tab.settle();
    assert.equal(await tab.text("#network .details h3"), hostile[4]);
    const again = await browser.open(file, { hash: await tab.run(() => location.hash) });
    assert.equal(await again.text("#network .details h3"), hostile[4]);
    await again.close();
  }
  await tab.fits();
  await tab.close();
}));

test("a name that is written from right to left does not turn round the dates beside it", () => withBrowser(async browser => {
  const tab = await browser.open(changed(house(), "right-to-left", data => {
    const card = data.cards.find(one => one.id === "shortage");
    Object.assign(card, { name: hostile[2], note: card.note.replace(card.name, hostile[2]) });
  }));
  const [name, day, year] = await tab.run(() => {
    const aside = [...document.querySelectorAll("#figures .aside")].find(node => / July to /.test(node.textContent));
    const text = aside.lastChild, range = document.createRange();
    const leftOf = (from, to) => {
      range.setStart(text, from);
      range.setEnd(text, to);
      return range.getBoundingClientRect().left;
    };
    return [aside.querySelector("bdi").getBoundingClientRect().right, leftOf(2, 4), leftOf(text.length - 4, text.length)];
  });
  assert.ok(name <= day && day < year, `${name}, ${day}, ${year}`);
  await tab.close();
}));

test("a run that stopped says so first", () => withBrowser(async browser => {
  const file = failed();
  await looksRight(browser, file, { all: few });
  const tab = await browser.open(file);
  assert.match(await tab.text("#alarm"), /^The run did not finish\. It ran 2 of 5 steps; what follows is of these\. .*intake/);
  // Whoever is handed the page need not know where the model lay.
  for (const part of ["#alarm", "#warnings"]) assert.doesNotMatch(await tab.text(part), /[/\\]\w+\.toml/);
  assert.match(await tab.text("#lead"), /did not finish/);
  // Two days are not made a year of.
  assert.match(await tab.text("#figures"), /Water use\s+7 L\s+in all/);
  await tab.close();
}));
