// What the stores hold: level over time, how often they are empty or full, and each day as a stripe.
import { choice, figure, isolated, make, named, svg, table } from "./dom.js";
import { colour, drawn, hinted } from "./chart.js";
import { data, stepWord, unpacked } from "./data.js";
import { dayOf, longDay, monthOfDay, shortMonths, firstDayOf, yearOfMonth } from "./days.js";
import { canDraw, lines } from "./lines.js";
import { amount, exact, hides, largestOf, number, percent, unitFor } from "./units.js";

const kShown = 12;

const days = store => store.decoded ??= unpacked(store.days);
const firstDay = () => dayOf(data.series?.first ?? data.start);
const top = store => store.capacity || largestOf(days(store)) || 1;

function spark(store) {
  const values = days(store), width = 120, height = 24, buckets = Math.min(width, values.length);
  let path = "";
  for (let i = 0; i < buckets; ++i) {
    const some = values.slice(Math.floor(i * values.length / buckets), Math.floor((i + 1) * values.length / buckets))
      .filter(value => value !== null);
    if (!some.length) continue;
    const mean = some.reduce((sum, value) => sum + value, 0) / some.length;
    path += `${path ? "L" : "M"}${(i * width / buckets).toFixed(1)},${(height - 2 - (height - 4) * mean / top(store)).toFixed(1)}`;
  }
  return svg("svg", { width, height, "aria-hidden": "true", class: "spark" }, svg("path", { d: path || "M0,0" }));
}

function storeTable(stores) {
  const amountCell = (value, unit) => value === undefined ? "–" : make("span", { textContent: amount(value, unit), title: hides(value, unit) });
  return table("Stores", [{ title: "store" }, { title: "group" }, { title: "capacity", number: true }, { title: `${stepWord}s empty`, number: true },
    { title: `${stepWord}s full`, number: true }, { title: "level over time" }], stores.map(store =>
    [named(store.name), named(store.group ?? ""), amountCell(store.capacity, store.unit), percent(store.empty_share),
     percent(store.full_share), store.days ? spark(store) : ""]));
}

const rgb = text => text.match(/[0-9a-f]{2}/gi).map(part => parseInt(part, 16));

// A row of pixels has 366 days, so that each has its place in all years: 29 February is one of them.
const kLeapDay = 59;
const firstOf = year => firstDayOf(year * 12);
const isLeap = year => firstOf(year + 1) - firstOf(year) === 366;

function placeOf(day) {
  const year = yearOfMonth(monthOfDay(day)), at = day - firstOf(year);
  return [year, !isLeap(year) && at >= kLeapDay ? at + 1 : at];
}

const dayAt = (year, place) => firstOf(year) + place - (!isLeap(year) && place >= kLeapDay ? 1 : 0);

// One row of pixels a year; the browser stretches them without blurring.
function strips(store, host) {
  const values = days(store), first = firstDay(), step = data.series?.step_days ?? 1;
  const years = [...new Set([yearOfMonth(monthOfDay(first)), ...values.map((_, i) => yearOfMonth(monthOfDay(first + i * step)))])];
  const pale = rgb(colour("--pale")), deep = rgb(colour("--blue")), empty = rgb(colour("--vermillion"));
  const emptyBelow = store.empty_below ?? 0, full = top(store);
  const rows = new Map(years.map(year => [year, make("canvas", { width: 366, height: 1 })]));
  const images = new Map([...rows].map(([year, canvas]) => [year, canvas.getContext("2d").createImageData(366, 1)]));
  values.forEach((value, i) => {
    if (value === null) return;
    const share = Math.max(0, Math.min(1, value / full));
    const tint = value <= emptyBelow ? empty : pale.map((low, part) => Math.round(low + (deep[part] - low) * share));
    for (let more = 0; more < step; ++more) {
      const [year, at] = placeOf(first + i * step + more);
      const image = images.get(year);
      if (!image) continue;
      image.data.set([...tint, 255], 4 * at);
      // A year without a leap day shows the day before it twice, rather than a gap.
      if (at === kLeapDay - 1) image.data.set([...tint, 255], 4 * kLeapDay);
    }
  });
  for (const [year, canvas] of rows) canvas.getContext("2d").putImageData(images.get(year), 0, 0);
  const saidAt = (year, event, canvas) => {
    const box = canvas.getBoundingClientRect();
    const day = dayAt(year, Math.floor((event.clientX - box.left) / box.width * 366));
    const value = values[Math.floor((day - first) / step)];
    if (value === undefined || value === null) return null;
    return [longDay(day), exact(value, store.unit), store.capacity ? `${percent(value / store.capacity)} full` : ""];
  };
  host.replaceChildren(...years.flatMap(year => [make("span", { className: "year", textContent: String(year) }),
    hinted(rows.get(year), event => saidAt(year, event, rows.get(year)))]), make("span", {}),
    make("div", { className: "of-months" }, ...shortMonths.map(name => make("span", { textContent: name }))));
}

function level(store, host, width) {
  host.replaceChildren();
  const values = days(store), chosen = unitFor(store.unit, Math.max(top(store), largestOf(values)));
  const first = firstDay(), step = data.series?.step_days ?? 1;
  const x = values.map((_, i) => (first + i * step) * 86400);
  const series = [{ label: store.name, values: values.map(value => value === null ? null : value / chosen.factor), colour: "--blue", fill: true }];
  if (store.capacity) series.push({ label: "capacity", values: x.map(() => store.capacity / chosen.factor), colour: "--soft", dash: [4, 4], width: 1 });
  lines(host, { width, height: 220, x, series, yLabel: `level [${chosen.unit}]` });
}

export function storeSection({ stores }) {
  const list = stores?.list ?? [];
  if (!list.length) return null;
  const body = [storeTable(list)];
  if (stores.more) body.push(make("p", { className: "note", textContent: `The ${list.length} largest stores; ${number(stores.more)} more are in the results.` }));
  const shown = list.filter(store => store.days).slice(0, kShown);
  const section = { id: "stores", title: list.length === 1 ? "The store" : "Stores", body,
    note: `How full ${list.length === 1 ? "it" : "each"} is over time, and on which share of the ${stepWord}s it is empty or full.` };
  if (!shown.length) return section;
  let store = shown[0];
  const chart = make("div", { className: "chart", role: "img" }), stripes = make("div", { className: "strips", role: "img" });
  const caption = make("span", { className: "caption" });
  const redraws = [];
  const name = () => {
    caption.replaceChildren(named(store.name), `, ${stepWord} by ${stepWord}`);
    chart.setAttribute("aria-label", `Level of ${isolated(store.name)} over time.`);
    stripes.setAttribute("aria-label", `Each ${stepWord} of ${isolated(store.name)} as a stripe, from empty to full.`);
    plot.querySelector("figcaption").textContent = `Level of ${isolated(store.name)} over time.`;
  };
  const plot = figure("", chart);
  if (shown.length > 1) {
    body.push(make("div", { className: "controls" }, choice("Show", shown.map((one, i) => [String(i), one.name]), "0", at => {
      store = shown[Number(at)];
      name();
      redraws.forEach(redraw => redraw());
    })));
  }
  if (canDraw()) body.push(plot);
  body.push(make("h3", {}, caption), make("p", { className: "note key" }, `Each ${stepWord} is a stripe, from `, make("i", { className: "pale" }), " nearly empty to ",
    make("i", { className: "deep" }), " full; ", make("i", { className: "none" }), ` is an empty ${stepWord}.`),
  figure(`Each ${stepWord} as a stripe: the darker, the fuller; ${stepWord}s without water stand out.`, stripes));
  name();
  section.ready = () => {
    if (canDraw()) redraws.push(drawn(chart, width => level(store, chart, width)));
    redraws.push(drawn(stripes, () => strips(store, stripes)));
    redraws.forEach(redraw => redraw());
  };
  return section;
}
