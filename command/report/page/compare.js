// Runs side by side: figures with differences to the first, charts that overlay them, and the figures of a sweep by its keys.
import { button, byId, choice, figure, make, named, opened, svg, table } from "./dom.js";
import { drawn } from "./chart.js";
import { kSeriesColours } from "./colours.js";
import { unpacked } from "./data.js";
import { dayOf, firstDayOf, isoMonth, isoOf, longDay, monthOf } from "./days.js";
import { csv, fileName, picture, save } from "./files.js";
import { canDraw, lines, noCharts } from "./lines.js";
import { digitsFor, hides, largestOf, number, unitFor } from "./units.js";

const kAcross = 5;  // runs beside the first in one table
const kRows = 40;
const kDashes = [undefined, [8, 4], [2, 3], [10, 3, 2, 3]];

const look = i => ({ colour: kSeriesColours[i % kSeriesColours.length], dash: kDashes[Math.floor(i / kSeriesColours.length) + (i % 2)] });

export function writeCompareHead(data) {
  byId("lead").textContent = data.runs.length ? `${data.runs.length} runs; differences are to the first, ${data.runs[0].name}`
    : `A sweep of ${number(data.sweep?.keys?.[0]?.values.length ?? 0)} members over ${(data.sweep?.keys ?? []).map(key => key.name).join(", ")}`;
  const stopped = data.runs.filter(run => run.outcome && run.outcome !== "finished");
  if (stopped.length) {
    byId("alarm").hidden = false;
    byId("alarm").textContent = `Did not finish: ${stopped.map(run => run.name).join(", ")}. Their figures are of the steps that ran.`;
  }
}

export function runSection(data) {
  if (!data.runs.length) return null;
  const set = run => Array.isArray(run.set) ? run.set.map(one => typeof one === "string" ? one : Object.values(one).join(" = ")).join(", ")
    : run.set && typeof run.set === "object" ? Object.entries(run.set).map(([key, value]) => `${key} = ${value}`).join(", ") : run.set ?? "";
  const body = [table("Runs", [{ title: "run" }, { title: "model" }, { title: "period" }, { title: "set" }], data.runs.map(run =>
    [named(run.name), named(run.title ?? ""), run.start ? `${longDay(dayOf(run.start))} to ${longDay(dayOf(run.end))}` : "", make("code", { textContent: set(run) })]))];
  if (data.notes?.length) body.push(make("ul", { className: "warnings" }, ...data.notes.map(text => make("li", {}, named(text)))));
  return { id: "runs", title: "Runs", body, note: "What is compared, and what differs in how it was run." };
}

function figureCell(row, at) {
  const value = row.values[at], first = row.values[0];
  const chosen = unitFor(row.unit, largestOf(row.values)), digits = chosen.unit === "%" ? 1 : digitsFor(largestOf(row.values) / chosen.factor);
  const whole = chosen.factor === 1 && row.values.every(one => Number.isInteger(one ?? 0));
  const text = one => number(one / chosen.factor, whole || one === 0 ? 0 : digits);
  if (value === null || value === undefined) return "–";
  const cell = make("span", { title: hides(value, row.unit) }, text(value));
  if (at && first !== null && first !== undefined) {
    const difference = value - first, share = first && Math.abs(difference) < 10 * Math.abs(first) ? ` (${difference > 0 ? "+" : ""}${number(100 * difference / Math.abs(first), 1)} %)` : "";
    const told = `${difference > 0 ? "+" : ""}${text(difference)}`;
    // Of shares in per cent the difference is in points.
    cell.append(make("span", { className: "difference", textContent: difference === 0 ? "same" : chosen.unit === "%" ? `${told} points` : `${told}${share}` }));
  }
  return cell;
}

function figureTables(data, rows) {
  const others = data.runs.map((_, i) => i).slice(1), tables = [];
  for (let from = 0; from === 0 || from < others.length; from += kAcross) {
    const shown = [0, ...others.slice(from, from + kAcross)];
    tables.push(table("Figures of the runs", [{ title: "figure" }, { title: "unit" }, ...shown.map(at => ({ title: data.runs[at].name, number: true }))],
      rows.map(row => [make("span", {}, named(row.label ?? row.name), row.meaning ? make("span", { className: "aside-text", textContent: row.meaning }) : null), unitFor(row.unit, largestOf(row.values)).unit, ...shown.map(at => figureCell(row, at))])));
  }
  return tables;
}

export function figureSection(data) {
  const figures = data.runs.length ? data.figures ?? [] : [];
  if (!figures.length) return null;
  const differs = row => row.values.some(value => value !== row.values[0]);
  const host = make("div", {}), status = make("p", { className: "note", role: "status" });
  const filters = { text: "", same: false };
  let most = kRows;
  const show = () => {
    const found = figures.filter(row => row.name.toLowerCase().includes(filters.text) && (filters.same || differs(row)));
    host.replaceChildren(...figureTables(data, found.slice(0, most)));
    status.textContent = found.length > most ? `The first ${most} of ${number(found.length)}.` : `${number(found.length)} of ${number(figures.length)} figures.`;
    if (found.length > most) status.append(" ", button("Show all", () => { most = Infinity; show(); }, { className: "screen" }));
  };
  const field = make("input", { type: "search", placeholder: "part of a name", oninput: () => { filters.text = field.value.trim().toLowerCase(); show(); } });
  const box = make("input", { type: "checkbox", onchange: () => { filters.same = box.checked; show(); } });
  show();
  return { id: "figures", title: "Figures side by side", note: "Beneath each figure, what it differs by from the first run.",
    body: [make("div", { className: "controls" }, make("label", { className: "choice" }, make("span", { textContent: "Find" }), field),
      make("label", { className: "choice" }, box, make("span", { textContent: "also those that are the same" }))), status, host] };
}

class Overlays {
  constructor(data) {
    this.data = data;
    this.at = 0;
    this.host = make("div", { className: "chart", role: "img" });
    this.when = make("p", { className: "note when" });
    this.keys = make("ul", { className: "keys" });
  }

  // All runs on one axis of time, as far as each goes.
  read() {
    const one = this.data.overlays[this.at];
    const monthly = !one.step_days;
    const firsts = one.values.map((_, i) => one.firsts?.[i] ?? one.first);
    const place = iso => monthly ? monthOf(iso) : dayOf(iso) / one.step_days;
    const rows = one.values.map(text => text ? Array.isArray(text) ? text : unpacked(text) : []);
    const start = Math.min(...firsts.map(place)), end = Math.max(...rows.map((row, i) => place(firsts[i]) + row.length));
    const days = Array.from({ length: end - start }, (_, i) => monthly ? firstDayOf(start + i) : (start + i) * one.step_days);
    return { one, monthly, days, iso: i => monthly ? isoMonth(start + i) : isoOf(days[i]),
      rows: rows.map((row, i) => days.map((_, at) => row[at + start - place(firsts[i])] ?? null)) };
  }

  draw(width) {
    this.host.replaceChildren();
    const read = this.shown = this.read();
    const chosen = this.chosen = unitFor(read.one.unit, Math.max(...read.rows.map(largestOf)));
    this.values = this.data.runs.map(() => make("span", { className: "value" }));
    this.keys.replaceChildren(...this.data.runs.map((run, i) => make("li", {}, svg("svg", { width: 26, height: 12, "aria-hidden": "true" },
      svg("line", { x1: 0, x2: 26, y1: 6, y2: 6, stroke: `var(${look(i).colour})`, "stroke-width": 3, "stroke-dasharray": look(i).dash?.join(" ") })),
    named(run.name), this.values[i])));
    this.plot = lines(this.host, { width, height: 300, x: read.days.map(day => day * 86400),
      yLabel: `${chosen.unit || "value"}${read.one.sum ? read.monthly ? " per month" : " per day" : ""}`,
      series: read.rows.map((row, i) => ({ label: this.data.runs[i].name, ...look(i), stepped: read.monthly, values: row.map(value => value === null ? null : value / chosen.factor) })),
      onPoint: at => this.point(at ?? null) });
    this.host.setAttribute("aria-label", `${read.one.label} of ${this.data.runs.map(run => run.name).join(", ")} over time.`);
    this.point(null);
  }

  point(at) {
    this.when.textContent = at === null ? " " : this.shown.iso(at);
    this.values.forEach((node, i) => {
      const value = at === null ? null : this.shown.rows[i][at];
      node.textContent = value === null ? "" : `${number(value / this.chosen.factor)} ${this.chosen.unit}`;
    });
  }

  saveCsv() {
    const { one, rows, days, iso } = this.shown;
    save(fileName(one.label, "csv"), csv(["date", ...this.data.runs.map(run => `${run.name} [${one.unit}]`)], days.map((_, i) => [iso(i), ...rows.map(row => row[i])])));
  }

  savePng() {
    picture(this.shown.one.label, this.data.runs.map((run, i) => ({ label: run.name, ...look(i) })), [this.plot], blob => save(fileName(this.shown.one.label, "png"), blob));
  }
}

export function overlaySection(data) {
  if (!data.overlays?.length) return null;
  const head = { id: "overlays", title: "Over time", note: "The same series of all runs in one chart." };
  if (!canDraw()) return { ...head, body: [noCharts()] };
  const overlays = new Overlays(data);
  let redraw = null;
  const select = choice("Show", data.overlays.map((one, i) => [String(i), one.label]), "0", at => {
    overlays.at = Number(at);
    redraw();
  });
  return { ...head, body: [make("div", { className: "controls" }, select, make("span", { className: "end" }, button("Save CSV", () => overlays.saveCsv()),
    button("Save PNG", () => overlays.savePng()))), figure("The runs over time.", overlays.keys, overlays.when, overlays.host)],
  ready: () => {
    redraw = drawn(overlays.host, width => overlays.draw(width));
    redraw();
  } };
}

// A number, or each text by its place in the order of its first occurrence.
function axisOf(values) {
  if (values.every(value => value === null || typeof value === "number" || (value !== "" && Number.isFinite(Number(value))))) {
    return { places: values.map(value => value === null ? null : Number(value)), names: null };
  }
  const names = [...new Set(values.map(String))];
  return { places: values.map(value => names.indexOf(String(value))), names };
}

class SweepChart {
  constructor(sweep) {
    this.sweep = sweep;
    const varies = list => list.findIndex(one => new Set(one.values).size > 1);
    this.x = Math.max(0, varies(sweep.keys));
    // Lines of the sizing curve for each value of another key, where a reader can tell them apart.
    this.by = sweep.keys.findIndex((key, i) => i !== this.x && new Set(key.values).size > 1 && new Set(key.values).size <= kSeriesColours.length);
    this.y = Math.max(0, sweep.figures.findIndex(figure => this.depends(figure)));
    this.host = make("div", { className: "chart", role: "img" });
    this.keys = make("ul", { className: "keys" });
    this.when = make("p", { className: "note when" });
  }

  // Members that differ in what stands across alone have other figures.
  depends(figure) {
    const { keys } = this.sweep, seen = new Map();
    return figure.values.some((value, i) => {
      const others = JSON.stringify(keys.filter((_, k) => k !== this.x).map(key => key.values[i]));
      if (seen.has(others)) return seen.get(others) !== value;
      seen.set(others, value);
      return false;
    });
  }

  axis(at) {
    return at < this.sweep.keys.length ? this.sweep.keys[at] : this.sweep.figures[at - this.sweep.keys.length];
  }

  // Members in the order of x; one line where each x occurs once, else points.
  draw(width) {
    this.host.replaceChildren();
    const x = this.axis(this.x), y = this.sweep.figures[this.y], by = this.by < 0 ? null : this.sweep.keys[this.by];
    const axis = axisOf(x.values), factor = unitFor(x.unit, largestOf(axis.places)), chosen = unitFor(y.unit, largestOf(y.values.map(Number)));
    const order = axis.places.map((_, i) => i).filter(i => axis.places[i] !== null && y.values[i] !== null).sort((a, b) => axis.places[a] - axis.places[b]);
    const groups = by ? [...new Set(by.values.map(String))].slice(0, kSeriesColours.length) : [null];
    this.keys.replaceChildren(...(by ? groups.map((name, i) => make("li", {}, svg("svg", { width: 14, height: 12, "aria-hidden": "true" },
      svg("circle", { cx: 7, cy: 6, r: 5, fill: `var(${kSeriesColours[i]})` })), named(`${by.name} = ${name}`))) : []));
    this.members = order;
    // The chart wants a place of its own for each member: those with the same value stand next to nothing apart.
    const apart = 1e-9 * ((axis.places[order[order.length - 1]] - axis.places[order[0]]) / factor.factor || 1);
    const once = by || new Set(order.map(i => axis.places[i])).size === order.length;
    this.plot = lines(this.host, { width, height: 320, x: order.map((i, k) => axis.places[i] / factor.factor + k * apart),
      xLabel: `${x.name}${factor.unit ? ` [${factor.unit}]` : ""}`, yLabel: `${y.name}${chosen.unit ? ` [${chosen.unit}]` : ""}`, points: !once, marks: order.length <= 60, xNames: axis.names,
      series: groups.map((name, g) => ({ label: y.name, colour: kSeriesColours[g], values: order.map(i => name === null || String(by.values[i]) === name ? y.values[i] / chosen.factor : null) })),
      span: true, curve: true, onPoint: at => this.point(at ?? null) });
    this.host.setAttribute("aria-label", `${y.name} by ${x.name}, ${order.length} members.`);
    this.point(null);
  }

  point(at) {
    if (at === null || !this.members) {
      this.when.textContent = " ";
      return;
    }
    const i = this.members[at], y = this.sweep.figures[this.y];
    this.when.textContent = [`member ${this.sweep.members?.[i] ?? i + 1}`, ...this.sweep.keys.map(key => `${key.name} = ${key.values[i]}`),
                             `${y.name} = ${number(y.values[i])} ${y.unit}`].join(", ");
  }
}

function memberTable(sweep) {
  const kMost = 300, few = sweep.figures.slice(0, 6), count = sweep.keys[0]?.values.length ?? 0;
  return [table("Members of the sweep", [...sweep.keys.map(key => ({ title: key.unit ? `${key.name} [${key.unit}]` : key.name })),
    ...few.map(one => ({ title: one.unit ? `${one.name} [${one.unit}]` : one.name, number: true }))], Array.from({ length: Math.min(count, kMost) }, (_, i) =>
    [...sweep.keys.map(key => String(key.values[i] ?? "")), ...few.map(one => number(one.values[i]))])),
  ...(count > kMost ? [make("p", { className: "note", textContent: `The first ${kMost} of ${number(count)}.` })] : [])];
}

export function sweepSection({ sweep }) {
  if (!sweep?.keys?.length || !sweep.figures?.length) return null;
  const head = { id: "sweep", title: "Figures by what was varied", note: "Each point is a member; choose what stands across, up and in colours." };
  if (!canDraw()) return { ...head, body: [noCharts(), ...memberTable(sweep)] };
  const chart = new SweepChart(sweep);
  let redraw = null;
  const names = list => list.map((one, i) => [String(i), one.name]);
  const pick = (label, options, value, set) => choice(label, options, String(value), at => {
    set(Number(at));
    redraw();
  });
  const controls = make("div", { className: "controls" }, pick("Across", [...names(sweep.keys), ...names(sweep.figures).map(([i, name]) => [String(Number(i) + sweep.keys.length), name])], chart.x, at => { chart.x = at; }),
    pick("Up", names(sweep.figures), chart.y, at => { chart.y = at; }),
    sweep.keys.length > 1 ? pick("Colours", [["-1", "none"], ...names(sweep.keys)], chart.by, at => { chart.by = at; }) : null);
  return { ...head, body: [controls, figure("Figures of the sweep.", chart.keys, chart.when, chart.host), opened("As a table", () => memberTable(sweep))],
    ready: () => {
      redraw = drawn(chart.host, width => chart.draw(width));
      redraw();
    } };
}
