"use strict";
(() => {
const report = JSON.parse(document.getElementById("data").textContent);
const colours = ["#1f77b4", "#ff7f0e", "#2ca02c", "#d62728", "#9467bd", "#8c564b", "#e377c2", "#7f7f7f", "#bcbd22",
                 "#17becf"];
const kFirstShown = 4;
const element = id => document.getElementById(id);
const seconds = report.days.map(day => day * 86400);

function make(tag, properties = {}, ...children) {
  const node = Object.assign(document.createElement(tag), properties);
  node.append(...children);
  return node;
}

// Little-endian floats, as the results hold them.
function floats(base64) {
  const bytes = Uint8Array.from(atob(base64), c => c.charCodeAt(0));
  const view = new DataView(bytes.buffer);
  return Float32Array.from({ length: bytes.length / 4 }, (_, i) => view.getFloat32(4 * i, true));
}

// What is no number leaves a gap; quality -1 marks that there was none.
function values(series, marksAbsence) {
  series.decoded ??= Array.from(floats(series.values),
    v => Number.isFinite(v) && !(marksAbsence && v === -1) ? v : null);
  return series.decoded;
}

function number(value) {
  if (value === null || value === undefined) return "–";
  const size = Math.abs(value);
  if (size !== 0 && (size < 1e-3 || size >= 1e12)) return value.toExponential(3);
  const digits = size >= 1000 ? 0 : size >= 10 ? 1 : 3;
  // A zero below zero is shown as zero.
  return (value + 0).toLocaleString("en", { maximumFractionDigits: digits });
}

function table(title, names, rows) {
  const isNumber = (cell) => typeof cell === "number" || cell === null;
  const numeric = names.map((_, i) => rows.some(row => typeof row[i] === "number"));
  return make("div", {}, make("h3", { textContent: title }), make("table", {},
    make("thead", {}, make("tr", {}, ...names.map((name, i) =>
      make("th", { textContent: name, className: numeric[i] ? "number" : "" })))),
    make("tbody", {}, ...rows.map(row => make("tr", {}, ...row.map(cell =>
      make("td", { textContent: isNumber(cell) ? number(cell) : cell,
                   className: isNumber(cell) ? "number" : "" })))))));
}

// Columns that are 0 in all rows are left out.
function balanceTable(rows) {
  const all = ["in", "rain", "drawn", "released", "taken_for_delivered", "created", "out", "evaporated", "infiltrated",
               "lost", "destroyed", "storage_change", "error"];
  const columns = all.filter(name => rows.some(row => row[name]));
  return table("Water balance [L]",
    ["", "name", "carries", ...columns.map(name => name.replaceAll("_", " ")), "relative error", "tolerance", "state"],
    rows.map(r => [r.level, r.name, r.carries, ...[...columns, "relative_error", "tolerance"].map(name =>
      r.not_balanced ? "" : r[name]),
      r.not_balanced ? `not balanced: ${r.not_balanced}` : r.balanced ? "balanced" : "DOES NOT BALANCE"]));
}

// Where the water came from and went to, each component by itself; what is small rounding is left out.
function accountTable(rows) {
  const kMostShown = 200;
  const shown = rows.filter(row => row.kind !== "rounding");
  const largest = [...shown].sort((a, b) => (b.litres ?? Infinity) - (a.litres ?? Infinity)).slice(0, kMostShown);
  const kept = shown.filter(row => largest.includes(row));
  return table("Water of the network [L]" + (kept.length < shown.length ? `, the ${kMostShown} largest rows` : ""),
    ["", "kind", "component", "litres", "reason"],
    kept.map(row => [row.side, row.kind.replaceAll("_", " "), row.component ?? "", row.litres, row.reason ?? ""]));
}

function figureTable(rows) {
  const kMostShown = 400;
  return table("Derived figures" + (rows.length > kMostShown ? `, the first ${kMostShown}` : ""),
    ["figure", "value", "unit", "from", "to"],
    rows.slice(0, kMostShown).map(row => [row.name, row.value, row.unit, row.from ?? "", row.to ?? ""]));
}

function writeSummary() {
  const s = report.summary;
  element("lead").textContent = `${s.start} to ${s.end} · ${number(s.steps_run)} of ${number(s.steps)} steps run · ` +
    `${s.components} components, ${s.connections} connections`;
  if (s.outcome !== "finished") {
    element("alarm").hidden = false;
    element("alarm").textContent = `The run did not finish (${s.outcome}). ${s.message}`;
  }
  const tables = element("tables");
  if (s.account?.length) tables.append(accountTable(s.account));
  if (s.tanks.length) {
    tables.append(table("Tanks", ["tank", "asked for", "not served", "unit", "served"], s.tanks.map(t =>
      [t.name, t.demand, t.deficit, t.unit, t.served === null ? "–" : `${(100 * t.served).toFixed(1)} %`])));
  }
  if (s.flows.length) {
    tables.append(table("Flows, total", ["flow", "carries", "total", "unit"],
      s.flows.map(f => [f.name, f.carries, f.total, f.unit])));
  }
  if (s.potentials.length) {
    tables.append(table("Potentials, total", ["group", "potential", "total", "unit"],
      s.potentials.map(p => [p.group, p.potential, p.total, p.unit])));
  }
  if (s.figures?.length) tables.append(figureTable(s.figures));
  if (s.balance) tables.append(balanceTable(s.balance));
}

// What has changed since the run, then what check and run have said: warnings before notes and what is accepted.
function writeWarnings() {
  const kMostShown = 50;
  const rows = [...report.changes.map(text => ({ severity: "warning", text })), ...(report.summary.warnings ?? [])];
  const passes = row => row.accepted || row.severity === "note";
  const sorted = [...rows.filter(row => !passes(row)), ...rows.filter(passes)];
  const place = row => row.file ? ` (${row.file}${row.line ? `:${row.line}` : ""})` : "";
  const ending = row => row.accepted ? " (accepted)" : row.severity === "note" ? " (note)" : "";
  element("warning-list").append(...sorted.slice(0, kMostShown).map(row => make("li", {
    className: passes(row) ? "passed" : "", textContent: row.text + place(row) + ending(row) })));
  if (sorted.length > kMostShown) {
    element("warning-list").append(make("li", {
      textContent: `… and ${sorted.length - kMostShown} more, which summary.json holds.` }));
  }
  element("warnings").hidden = sorted.length === 0;
}

const zoomed = [];  // charts over time: they show the same days

function zoomAll(min, max) {
  for (const chart of zoomed) {
    if (chart.scales.x.min !== min || chart.scales.x.max !== max) chart.setScale("x", { min, max });
  }
}

function axes(units) {
  return units.map((unit, i) => ({
    scale: unit, label: unit || "value", size: 76, labelSize: 22, side: i % 2 ? 1 : 3,
    grid: { show: i === 0, stroke: "#e8ecf0", width: 1 }, ticks: { stroke: "#ccd" },
    values: (_, ticks) => ticks.map(tick => tick === null ? "" : tick.toLocaleString("en", { maximumSignificantDigits: 6 })),
  }));
}

const timeAxis = { grid: { stroke: "#e8ecf0", width: 1 }, ticks: { stroke: "#ccd" } };
const isoDay = second => second === null ? "–" : new Date(second * 1000).toISOString().slice(0, 10);
const widthOf = host => Math.max(320, host.clientWidth);

// A group of series with a box to tick for each.
class TimeChart {
  constructor(section) {
    this.section = section;
    this.host = make("div", { className: "chart" });
    this.shown = new Set(this.mostVaried());
    this.picker = make("div", { className: "controls picker" });
    const all = make("button", { textContent: "all" }), none = make("button", { textContent: "none" });
    const whole = make("button", { textContent: "whole period" });
    all.onclick = () => this.choose(section.series.map((_, i) => i).slice(0, 40));
    none.onclick = () => this.choose([]);
    whole.onclick = () => zoomAll(seconds[0], seconds[seconds.length - 1]);
    const node = make("section", { id: section.id }, make("h2", { textContent: section.title }),
      make("p", { className: "note", textContent: section.note }),
      make("div", { className: "controls" }, all, none, whole), this.picker, this.host);
    element("charts").append(node);
    this.fillPicker();
    this.draw();
    new ResizeObserver(() => {
      if (this.plot && widthOf(this.host) !== this.plot.width) {
        this.plot.setSize({ width: widthOf(this.host), height: 320 });
      }
    }).observe(this.host);
  }

  // What changes says more than what stays the same.
  mostVaried() {
    const variety = this.section.series.map(one => new Set(values(one, this.section.marksAbsence)).size);
    const order = variety.map((_, i) => i).sort((a, b) => variety[b] - variety[a]);
    const changing = order.filter(i => variety[i] > 1);
    return (changing.length ? changing : order).slice(0, kFirstShown);
  }

  colour(i) { return colours[i % colours.length]; }

  choose(indices) {
    this.shown = new Set(indices);
    this.fillPicker();
    this.draw();
  }

  fillPicker() {
    this.picker.replaceChildren(...this.section.series.map((series, i) => {
      const box = make("input", { type: "checkbox", checked: this.shown.has(i) });
      const swatch = make("span", { className: "swatch" });
      if (box.checked) swatch.style.background = this.colour(i);
      box.onchange = () => {
        this.shown[box.checked ? "add" : "delete"](i);
        swatch.style.background = box.checked ? this.colour(i) : "";
        this.draw();
      };
      return make("label", {}, box, swatch, series.name);
    }));
  }

  draw() {
    const before = this.plot && { min: this.plot.scales.x.min, max: this.plot.scales.x.max };
    if (this.plot) {
      zoomed.splice(zoomed.indexOf(this.plot), 1);
      this.plot.destroy();
      this.plot = null;
    }
    const chosen = [...this.shown].sort((a, b) => a - b);
    if (!chosen.length) return;
    const { series, marksAbsence } = this.section;
    const units = [...new Set(chosen.map(i => series[i].unit))];
    const options = {
      width: widthOf(this.host), height: 320, tzDate: second => uPlot.tzDate(new Date(second * 1000), "Etc/UTC"),
      cursor: { sync: { key: "days" }, drag: { x: true, y: false } },
      scales: { x: { time: true } },
      axes: [timeAxis, ...axes(units)],
      series: [{ label: "date", value: (_, second) => isoDay(second) }, ...chosen.map(i => ({
        label: series[i].name, scale: series[i].unit, stroke: this.colour(i), width: 1.2, points: { show: seconds.length < 3 },
        value: (_, v) => v === null ? "–" : `${number(v)} ${series[i].unit}`,
      }))],
      hooks: { setScale: [(chart, key) => {
        if (key === "x" && zoomed.includes(chart)) zoomAll(chart.scales.x.min, chart.scales.x.max);
      }] },
    };
    this.plot = new uPlot(options, [seconds, ...chosen.map(i => values(series[i], marksAbsence))], this.host);
    if (before) this.plot.setScale("x", before);
    zoomed.push(this.plot);
  }
}

function drawDuration(flows) {
  const select = element("duration-flow"), logarithmic = element("duration-log"), host = element("duration-chart");
  select.append(...flows.map((flow, i) => make("option", { value: i, textContent: flow.name })));
  const varied = flows.findIndex(flow => new Set(values(flow)).size > 10);
  select.value = varied < 0 ? 0 : varied;
  let plot = null;
  const draw = () => {
    if (plot) plot.destroy();
    const flow = flows[select.value];
    const sorted = values(flow).filter(v => v !== null).sort((a, b) => b - a);
    const share = sorted.map((_, i) => 100 * (i + 1) / sorted.length);
    const drawn = logarithmic.checked ? sorted.map(v => v > 0 ? v : null) : sorted;
    plot = new uPlot({
      width: widthOf(host), height: 320, cursor: { drag: { x: true, y: false } },
      scales: { x: { time: false }, [flow.unit]: { distr: logarithmic.checked ? 3 : 1 } },
      axes: [{ ...timeAxis, label: "share of days [%]", labelSize: 22 }, ...axes([flow.unit])],
      series: [{ label: "share of days", value: (_, v) => v === null ? "–" : `${v.toFixed(1)} %` },
        { label: flow.name, scale: flow.unit, stroke: colours[0], width: 1.6, fill: "rgba(31,119,180,0.10)",
          value: (_, v) => v === null ? "–" : `${number(v)} ${flow.unit}` }],
    }, [share, drawn], host);
  };
  select.onchange = logarithmic.onchange = draw;
  element("duration").hidden = false;
  draw();
  new ResizeObserver(() => plot.width !== widthOf(host) && plot.setSize({ width: widthOf(host), height: 320 }))
    .observe(host);
}

writeSummary();
writeWarnings();
const canDraw = typeof uPlot !== "undefined";
element("licence").hidden = !canDraw;
if (!canDraw) {
  element("charts").append(make("p", { className: "note",
    textContent: "There are no charts: the command that made this page was built without uPlot." }));
} else if (seconds.length) {
  for (const section of report.sections) new TimeChart(section);
  const flows = report.sections.find(section => section.id === "flows");
  if (flows) drawDuration(flows.series);
}
element("contents").append(...[...document.querySelectorAll("main section")].filter(node => !node.hidden).map(node =>
  make("a", { href: `#${node.id}`, textContent: node.querySelector("h2").textContent })));
const drawing = document.querySelector(".drawing");
if (drawing.querySelector("svg")) {
  const enlarge = make("button", { textContent: "fit or full size" });
  enlarge.onclick = () => drawing.classList.toggle("large");
  drawing.before(make("div", { className: "controls" }, enlarge));
}
})();
