// The figures of a sweep by what it varied: a sizing curve, or points.
import { choice, figure, make, named, opened, svg, table } from "./dom.js";
import { drawn } from "./chart.js";
import { kSeriesColours } from "./colours.js";
import { canDraw, lines, noCharts } from "./lines.js";
import { amount, hides, largestOf, number, unitFor, unitText } from "./units.js";

const kOpen = 40;  // members whose table is shown from the start
const kRows = 300, kColumns = 6;

const withUnit = (name, unit) => unit ? `${name} [${unit}]` : name;
const varies = one => new Set(one.values).size > 1;

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
    this.x = Math.max(0, sweep.keys.findIndex(varies));
    // Lines of the sizing curve for each value of another key, where a reader can tell them apart.
    this.by = sweep.keys.findIndex((key, i) => i !== this.x && varies(key) && new Set(key.values).size <= kSeriesColours.length);
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
      xLabel: withUnit(x.name, factor.unit), yLabel: withUnit(y.name, chosen.unit), points: !once, marks: order.length <= 60, xNames: axis.names,
      series: groups.map((name, g) => ({ label: y.name, colour: kSeriesColours[g],
        values: order.map(i => name === null || String(by.values[i]) === name ? y.values[i] / chosen.factor : null) })),
      span: true, curve: true, onPoint: at => this.point(at) });
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
                             `${y.name} = ${amount(y.values[i], y.unit)}`].join(", ");
  }
}

// The figures that differ first, as many as a sheet of paper has room for.
function memberTable(sweep) {
  const { keys, figures } = sweep, count = keys[0].values.length;
  const few = [...figures.filter(varies), ...figures.filter(one => !varies(one))].slice(0, kColumns);
  const columns = few.map(one => ({ ...one, chosen: unitFor(one.unit, largestOf(one.values)) }));
  const cell = (value, { unit, chosen }) => typeof value === "number"
    ? make("span", { textContent: number(value / chosen.factor), title: hides(value, unit) }) : "–";
  const rows = Array.from({ length: Math.min(count, kRows) }, (_, i) =>
    [...keys.map(key => String(key.values[i] ?? "")), ...columns.map(one => cell(one.values[i], one))]);
  return [table("Members of the sweep", [...keys.map(key => ({ title: named(withUnit(key.name, unitText(key.unit))) })),
    ...columns.map(one => ({ title: named(withUnit(one.name, one.chosen.unit)), number: true }))], rows),
  ...(count > kRows ? [make("p", { className: "note", textContent: `The first ${kRows} of ${number(count)}.` })] : [])];
}

export function sweepSection({ sweep }) {
  if (!sweep?.keys?.length || !sweep.figures?.length) return null;
  const head = { id: "sweep", title: "Figures by what was varied" };
  if (!canDraw()) return { ...head, note: "Each row is a member of the sweep.", body: [noCharts(), ...memberTable(sweep)] };
  const chart = new SweepChart(sweep);
  let redraw = null;
  const names = list => list.map((one, i) => [String(i), one.name]);
  const pick = (label, options, value, set) => choice(label, options, String(value), at => {
    set(Number(at));
    redraw();
  });
  const controls = make("div", { className: "controls" }, pick("Across", names([...sweep.keys, ...sweep.figures]), chart.x, at => { chart.x = at; }),
    pick("Up", names(sweep.figures), chart.y, at => { chart.y = at; }),
    sweep.keys.length > 1 ? pick("Colours", [["-1", "none"], ...names(sweep.keys)], chart.by, at => { chart.by = at; }) : null);
  const list = opened("As a table", () => memberTable(sweep));
  return { ...head, note: "Each point is a member of the sweep.", how: "Choose what stands across, up and in colours.",
    body: [controls, figure("Figures of the sweep.", chart.keys, chart.when, chart.host), list],
    ready: () => {
      list.open = sweep.keys[0].values.length <= kOpen;
      redraw = drawn(chart.host, width => chart.draw(width));
      redraw();
    } };
}
