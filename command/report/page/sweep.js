// The figures of a sweep by what it varied: a sizing curve, or points.
import { choice, figure, make, named, opened, svg, table } from "./dom.js";
import { drawn } from "./chart.js";
import { canDraw, lines, noCharts } from "./lines.js";
import { differentOf, isNothing, isNumeric, keyText, seriesOf, unitOf } from "./sweep_groups.js";
import { amount, hides, largestOf, number, unitFor } from "./units.js";

const kOpen = 40;  // members whose table is shown from the start
const kRows = 300, kColumns = 6;
const kMarked = 60;  // members whose points are marked on their curve

const withUnit = (name, unit) => unit ? `${name} [${unit}]` : name;
const varies = one => new Set(one.values).size > 1;

// Numbers in their unit, or each text by its place among them in their order.
function axisOf(one, isKey) {
  if (isNumeric(one)) {
    const { unit, factor } = isKey ? unitOf(one) : unitFor(one.unit, largestOf(one.values));
    return { places: one.values.map(value => value === null ? null : value / factor), names: null, unit };
  }
  const different = differentOf(one.values);
  return { places: one.values.map(value => different.indexOf(value)), names: different.map(value => keyText(one, value)), unit: "" };
}

class SweepChart {
  constructor(sweep) {
    this.sweep = sweep;
    this.x = Math.max(0, sweep.keys.findIndex(varies));
    this.by = sweep.keys.findIndex((key, i) => i !== this.x && varies(key));
    const isMains = one => one.name === "network.mains" && one.values.some(value => value), isSomething = one => one.values.some(value => value);
    this.y = [one => this.depends(one), isMains, isSomething, () => true].map(is => sweep.figures.findIndex(is)).find(at => at >= 0);
    this.host = make("div", { className: "chart", role: "img" });
    this.keys = make("ul", { className: "keys" });
    this.when = make("p", { className: "note when" });
    this.missing = make("p", { className: "note missing" });
  }

  // Members that differ in what stands across alone have other figures.
  depends(figure) {
    const { keys } = this.sweep, seen = new Map();
    return figure.values.some((value, i) => {
      if (value === null) return false;
      const others = JSON.stringify(keys.filter((_, k) => k !== this.x).map(key => key.values[i]));
      if (seen.has(others)) return seen.get(others) !== value;
      seen.set(others, value);
      return false;
    });
  }

  axis(at) {
    return at < this.sweep.keys.length ? this.sweep.keys[at] : this.sweep.figures[at - this.sweep.keys.length];
  }

  // Members in the order of x.
  draw(width) {
    this.host.replaceChildren();
    const { keys } = this.sweep, x = this.axis(this.x), y = this.sweep.figures[this.y], by = this.by < 0 ? null : keys[this.by];
    const across = axisOf(x, keys.includes(x)), chosen = unitFor(y.unit, largestOf(y.values));
    const members = this.members = across.places.map((_, i) => i).filter(i => across.places[i] !== null && y.values[i] !== null)
      .sort((a, b) => across.places[a] - across.places[b]);
    const { colours, groups, isCurve } = seriesOf(keys, x, by, members);
    this.keys.replaceChildren(...(by ? colours.map(one => make("li", {}, sample(one), named(`${by.name} = ${one.name}`))) : []));
    this.missing.textContent = this.missingText(x, y);
    this.host.setAttribute("aria-label", `${y.name} by ${x.name}, ${members.length} members as ${isCurve ? "curves" : "points"}.`);
    this.point(null);
    if (!members.length) return;
    // The chart wants a place of its own for each member: those with the same value stand next to nothing apart.
    const apart = 1e-9 * ((across.places[members[members.length - 1]] - across.places[members[0]]) || 1);
    this.plot = lines(this.host, { width, height: 320, x: members.map((i, k) => across.places[i] + k * apart),
      xLabel: withUnit(x.name, across.unit), yLabel: withUnit(y.name, chosen.unit), points: !isCurve, marks: members.length <= kMarked,
      xNames: across.names, span: true, curve: true, onPoint: at => this.point(at),
      series: groups.map(one => {
        const own = new Set(one.members);
        return { label: y.name, colour: one.colour, outline: one.outline, values: members.map(i => own.has(i) ? y.values[i] / chosen.factor : null) };
      }) });
  }

  // Who is not in the chart, and why.
  missingText(x, y) {
    const { ends } = this.sweep, all = y.values.map((_, i) => i);
    const unfinished = all.filter(i => ends && ends[i] !== "finished");
    const without = one => all.filter(i => isNumeric(one) && isNothing(one.values[i]) && !unfinished.includes(i)).length;
    const told = (count, reason) => count ? [`${number(count)} ${count === 1 ? "member" : "members"} ${reason}`] : [];
    const reasons = [...told(unfinished.length, "did not finish"), ...told(without(y), `without ${y.name}`),
      ...(x === y ? [] : told(without(x), this.sweep.keys.includes(x) ? `with ${x.name} as in the model` : `without ${x.name}`))];
    return reasons.length ? `Not in the chart: ${reasons.join(", ")}.` : "";
  }

  point(at) {
    if (at === null || !this.members) {
      this.when.textContent = " ";
      return;
    }
    const i = this.members[at], y = this.sweep.figures[this.y];
    this.when.textContent = [`member ${this.sweep.members?.[i] ?? i + 1}`, ...this.sweep.keys.map(key => `${key.name} = ${keyText(key, key.values[i])}`),
                             `${y.name} = ${amount(y.values[i], y.unit)}`].join(", ");
  }
}

const sample = ({ colour, outline }) => svg("svg", { width: 14, height: 12, "aria-hidden": "true" },
  svg("circle", { cx: 7, cy: 6, r: 5, fill: `var(${colour})`, stroke: outline && `var(${outline})` }));

// The figures that differ first, as many as a sheet of paper has room for.
function memberTable(sweep) {
  const { keys, figures, members, ends } = sweep, count = keys[0].values.length;
  const few = [...figures.filter(varies), ...figures.filter(one => !varies(one))].slice(0, kColumns);
  const columns = few.map(one => ({ ...one, chosen: unitFor(one.unit, largestOf(one.values)) }));
  const cell = (value, { unit, chosen }) => typeof value === "number"
    ? make("span", { textContent: number(value / chosen.factor), title: hides(value, unit) }) : "–";
  const rows = Array.from({ length: Math.min(count, kRows) }, (_, i) => [String(members?.[i] ?? i + 1),
    ...keys.map(key => keyText(key, key.values[i], { withUnit: false })), ...(ends ? [ends[i]] : []), ...columns.map(one => cell(one.values[i], one))]);
  return [table("Members of the sweep", [{ title: "member", number: true },
    ...keys.map(key => ({ title: named(withUnit(key.name, unitOf(key).unit)), number: isNumeric(key) })), ...(ends ? [{ title: "outcome" }] : []),
    ...columns.map(one => ({ title: named(withUnit(one.name, one.chosen.unit)), number: true }))], rows),
  ...(count > kRows ? [make("p", { className: "note", textContent: `The first ${kRows} of ${number(count)}.` })] : [])];
}

export function sweepSection({ sweep }) {
  if (!sweep?.keys?.length) return null;
  const head = { id: "sweep", title: "Figures by what was varied" };
  if (!sweep.figures.length) return { ...head, note: "No figure differs between the members.", body: memberTable(sweep) };
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
  return { ...head, note: "Each point is a member of the sweep. A line joins members that differ only in what stands across.",
    how: "Choose what stands across, up and in colours.",
    body: [controls, figure("Figures of the sweep.", chart.keys, chart.when, chart.host, chart.missing), list],
    ready: () => {
      list.open = sweep.keys[0].values.length <= kOpen;
      redraw = drawn(chart.host, width => chart.draw(width));
      redraw();
    } };
}
