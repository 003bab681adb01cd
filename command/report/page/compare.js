// Runs side by side: figures with differences to the first, and charts that overlay them.
import { button, byId, choice, figure, make, named, table } from "./dom.js";
import { drawn } from "./chart.js";
import { kSeriesColours } from "./colours.js";
import { unpacked } from "./data.js";
import { dayOf, firstDayOf, isoMonth, isoOf, longDay, longMonth, monthOf } from "./days.js";
import { csv, fileName, picture, save } from "./files.js";
import { canDraw, lines, lineSample, noCharts } from "./lines.js";
import { digitsFor, hides, largestOf, number, unitFor } from "./units.js";

const kAcross = 4;  // runs beside the first in one table, so that it fits a sheet of paper
const kRows = 40;
const kDashes = [undefined, [8, 4], [2, 3], [10, 3, 2, 3]];

const look = i => ({ colour: kSeriesColours[i % kSeriesColours.length], dash: kDashes[Math.floor(i / kSeriesColours.length) + (i % 2)] });

// Members that stopped, and why the first of them did.
function alarmOfSweep({ all, outcomes, failures }) {
  const stopped = Object.entries(outcomes).filter(([outcome]) => outcome !== "finished");
  const count = stopped.reduce((sum, [, members]) => sum + members, 0);
  byId("alarm").hidden = false;
  byId("alarm").append(make("strong", { textContent: `${number(count)} of ${number(all)} members did not finish. ` }),
    `They have no figures (${stopped.map(([outcome, members]) => `${number(members)} ${outcome}`).join(", ")}). `);
  byId("alarm").append(...failures.filter(one => one.message).flatMap(one => [make("br"), `Member ${one.member}: `, named(one.message)]));
}

export function writeCompareHead(data) {
  byId("lead").textContent = data.runs.length ? `${data.runs.length} runs, compared with the first of them, ${data.runs[0].name}`
    : `A sweep of ${number(data.sweep?.all ?? 0)} members over ${(data.sweep?.keys ?? []).map(key => key.name).join(", ")}`;
  if (data.sweep?.outcomes) alarmOfSweep(data.sweep);
  const stopped = data.runs.filter(run => run.outcome && run.outcome !== "finished");
  if (stopped.length) {
    byId("alarm").hidden = false;
    byId("alarm").textContent = `Did not finish: ${stopped.map(run => run.name).join(", ")}. Their figures are of the steps that ran.`;
  }
}

export function runSection(data) {
  if (!data.runs.length) return null;
  const columns = [["run", run => named(run.name)],
    ["set", run => run.set && make("code", {}, ...run.set.flatMap((text, i) => i ? [", ", named(text)] : [named(text)]))],
    ["title", run => run.title && named(run.title)],
    ["period", run => run.start && `${longDay(dayOf(run.start))} to ${longDay(dayOf(run.end))}`]].filter(([, cell]) => data.runs.some(cell));
  const body = [table("Runs", columns.map(([title]) => ({ title })), data.runs.map(run => columns.map(([, cell]) => cell(run) || "")))];
  if (data.notes?.length) body.push(make("ul", { className: "warnings" }, ...data.notes.map(text => make("li", {}, named(text)))));
  return { id: "runs", title: "Runs", body, note: "What is compared, and what differs in how it was run." };
}

// With the digits of its row, but never so few that an amount looks like nothing, or like a tenth of what it is.
function shownIn(amount, digits) {
  if (amount === 0) return "0";
  const size = Math.abs(amount), inLastDigit = size * 10 ** digits;
  return number(amount, inLastDigit >= 10 || Number.isInteger(inLastDigit) ? digits : Math.max(digits, digitsFor(size)));
}

function figureCell(row, at) {
  const value = row.values[at], first = row.values[0];
  const chosen = unitFor(row.unit, largestOf(row.values)), digits = chosen.unit === "%" ? 1 : digitsFor(largestOf(row.values) / chosen.factor);
  const whole = chosen.factor === 1 && row.values.every(one => Number.isInteger(one ?? 0));
  const text = one => shownIn(one / chosen.factor, whole ? 0 : digits);
  if (value === null || value === undefined) return "–";
  const cell = make("span", { title: hides(value, row.unit) }, text(value));
  if (at && first !== null && first !== undefined) {
    cell.append(make("span", { className: "difference", textContent: differenceText(value - first, first, chosen, text) }));
  }
  return cell;
}

// Of shares in per cent the difference is in points.
function differenceText(difference, first, chosen, text) {
  if (difference === 0) return "same";
  const sign = difference > 0 ? "+" : "", told = sign + text(difference);
  if (chosen.unit === "%") return `${told} points`;
  const isTold = first && Math.abs(difference) < 10 * Math.abs(first);
  return isTold ? `${told} (${sign}${number(100 * difference / Math.abs(first), 1)} %)` : told;
}

function figureName({ name, label, meaning }) {
  return make("span", {}, named(label ?? name), meaning ? make("span", { className: "aside-text", textContent: meaning }) : null);
}

function figureTables(data, rows) {
  const others = data.runs.map((_, i) => i).slice(1), tables = [];
  for (let from = 0; from === 0 || from < others.length; from += kAcross) {
    const shown = [0, ...others.slice(from, from + kAcross)];
    const columns = [{ title: "figure" }, { title: "unit" }, ...shown.map(at => ({ title: data.runs[at].name, number: true }))];
    const which = others.length > kAcross ? `runs 1 and ${from + 2} to ${from + shown.length}` : "the runs";
    tables.push(table(`Figures of ${which}`, columns,
      rows.map(row => [figureName(row), unitFor(row.unit, largestOf(row.values)).unit, ...shown.map(at => figureCell(row, at))])));
  }
  return tables;
}

export function figureSection(data) {
  const figures = data.runs.length ? data.figures ?? [] : [];
  if (!figures.length) return null;
  const differs = row => row.values.some(value => value !== row.values[0]);
  const host = make("div", {}), status = make("p", { className: "note figures-found", role: "status" });
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
    return { one, monthly, days, iso: i => monthly ? isoMonth(start + i) : isoOf(days[i]), said: i => monthly ? longMonth(start + i) : longDay(days[i]),
      rows: rows.map((row, i) => days.map((_, at) => row[at + start - place(firsts[i])] ?? null)) };
  }

  draw(width) {
    this.host.replaceChildren();
    const read = this.shown = this.read();
    const chosen = this.chosen = unitFor(read.one.unit, Math.max(...read.rows.map(largestOf)));
    this.values = this.data.runs.map(() => make("span", { className: "value" }));
    this.keys.replaceChildren(...this.data.runs.map((run, i) => make("li", {}, lineSample(look(i)), named(run.name), this.values[i])));
    this.plot = lines(this.host, { width, height: 300, x: read.days.map(day => day * 86400),
      yLabel: `${chosen.unit || "value"}${read.one.sum ? read.monthly ? " per month" : " per day" : ""}`,
      series: read.rows.map((row, i) => ({ label: this.data.runs[i].name, ...look(i), stepped: read.monthly,
        values: row.map(value => value === null ? null : value / chosen.factor) })),
      onPoint: at => this.point(at) });
    this.host.setAttribute("aria-label", `${read.one.label} of ${this.data.runs.map(run => run.name).join(", ")} over time.`);
    this.point(null);
  }

  point(at) {
    this.when.textContent = at === null ? " " : this.shown.said(at);
    this.values.forEach((node, i) => {
      const value = at === null ? null : this.shown.rows[i][at];
      node.textContent = value === null ? "" : `${number(value / this.chosen.factor)} ${this.chosen.unit}`;
    });
  }

  saveCsv() {
    const { one, rows, days, iso } = this.shown;
    const head = ["date", ...this.data.runs.map(run => `${run.name} [${one.unit}]`)];
    save(fileName(one.label, "csv"), csv(head, days.map((_, i) => [iso(i), ...rows.map(row => row[i])])));
  }

  savePng() {
    const { label } = this.shown.one, entries = this.data.runs.map((run, i) => ({ label: run.name, ...look(i) }));
    picture(label, entries, [this.plot], blob => save(fileName(label, "png"), blob));
  }
}

export function overlaySection(data) {
  const head = { id: "overlays", title: "Over time", note: "The same series of all runs in one chart." };
  if (!data.overlays?.length) {
    return data.runs.length ? { ...head, note: data.sweep ? "There is no series that all of these runs have: members of a sweep leave only figures."
      : "There is no series that all of these runs have.", body: [] } : null;
  }
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
