// A chart of lines by uPlot, with axes that hold their labels whatever the figures are.
import { make, svg } from "./dom.js";
import { colour, font, tickTexts, widthOf, wrapped } from "./chart.js";
import { shortMonths } from "./days.js";

const kDay = 86400;
const kNarrowest = 44;  // pixels that a name needs

function timeTexts(_, splits, __, ___, step) {
  let year = null, before = null;
  const hasMidnight = splits.some(second => second !== null && second % kDay === 0);
  return splits.map(second => {
    // Within a day there is nothing to name.
    if (second === null || Math.floor(second / kDay) === before || (hasMidnight && second % kDay !== 0)) return "";
    before = Math.floor(second / kDay);
    const date = new Date(second * 1000), now = date.getUTCFullYear();
    const first = now !== year;
    year = now;
    if (step >= 360 * kDay) return String(now);
    const month = shortMonths[date.getUTCMonth()];
    const text = step >= 27 * kDay ? month : `${date.getUTCDate()} ${month}`;
    return first ? `${text}\n${now}` : text;
  });
}

export const canDraw = () => typeof uPlot !== "undefined";

// One day alone has a day's width.
const days = ({ data: [x] }, low, high) => x.length === 1 ? [x[0] - kDay / 2, x[0] + kDay / 2] : [low, high];

// From zero where nothing lies below it.
function range(_, low, high) {
  if (low === null || high === null) return [0, 1];
  if (low === high) return low >= 0 ? [0, high ? high * 1.2 : 1] : [low * 1.2, 0];
  const room = (high - (low >= 0 ? 0 : low)) * 0.06;
  return [low >= 0 ? 0 : low - room, high + room];
}

// One value, and some room about it.
const about = value => value ? [value - 0.1 * Math.abs(value), value + 0.1 * Math.abs(value)] : [0, 1];

// The shape of a curve, wherever zero is.
function close(_, low, high) {
  if (low !== null && low === high) return about(low);
  if (low === null || high === null || low < 0.3 * high) return range(_, low, high);
  const room = (high - low) * 0.08;
  return [low - room, high + room];
}

// What stands across where it is no time: points at the ends are seen whole.
function spread(low, high) {
  if (high - low <= 1e-6 * Math.abs(high)) return about(low);
  const room = (high - low) * 0.02;
  return [low - room, high + room];
}

// Names in place of numbers: each has its part of the axis, or every second, third ... where there are many.
function namedAxis(names) {
  const roomOf = chart => chart.bbox.width / chart.ctx.canvas.width * chart.width / names.length;
  return { splits: chart => {
    const step = Math.max(1, Math.ceil(kNarrowest / roomOf(chart)));
    return names.flatMap((_, i) => i % step ? [] : [i]);
  }, values: (chart, places) => places.map((place, i) =>
    wrapped(names[place] ?? "", roomOf(chart) * ((places[i + 1] ?? places[i] + (places[1] ?? 1)) - place) - 8, 2).join("\n")) };
}

// Finds the point next to the pointer, whichever series it is of.
function nearestTo(chart) {
  const { left, top } = chart.cursor, [xs, ...rows] = chart.data;
  let found = null, least = Infinity;
  xs.forEach((x, i) => {
    const aside = (chart.valToPos(x, "x") - left) ** 2;
    if (aside >= least) return;
    for (const row of rows) {
      const distance = row[i] === null ? Infinity : aside + (chart.valToPos(row[i], "y") - top) ** 2;
      if (distance < least) [found, least] = [i, distance];
    }
  });
  return found;
}

// The last month is as long as it is, or as those before it.
const prolonged = (x, until) => [...x, until ?? 2 * x[x.length - 1] - (x[x.length - 2] ?? x[0] - 30 * kDay)];
const repeated = values => [...values, values[values.length - 1]];

// The place under the pointer; null: none. A step is that of the month in which it begins.
function pointed(chart, isStepped) {
  const at = chart.cursor.idx ?? null;
  if (at === null || !isStepped) return at;
  const isBefore = chart.data[0][at] > chart.posToVal(chart.cursor.left, "x");
  return Math.max(0, Math.min(isBefore ? at - 1 : at, chart.data[0].length - 2));
}

// `series`: [{ label, values, colour: name of a variable, outline: likewise, of points, dash, stepped }]. `x`: seconds, or numbers with `xLabel`; `until`: where the last step ends.
export function lines(host, { width, height, x, until, series, yLabel, xLabel, xNames, marks, curve, logarithmic, points, span, key, onZoom, onPoint }) {
  const soft = colour("--soft"), rule = colour("--rule");
  const across = xLabel ? { label: xLabel, labelSize: 18, size: xNames ? 56 : 42, ...(xNames ? namedAxis(xNames) : { values: (_, values) => tickTexts(values), space: 64 }) }
    : { values: timeTexts, space: 64, size: 52 };
  const xRange = xNames ? () => [-0.5, xNames.length - 0.5] : !xLabel ? days : curve ? () => spread(x[0], x[x.length - 1]) : undefined;
  let nearest = null;
  const isStepped = x.length > 0 && series.some(one => one.stepped);
  const axis = { stroke: soft, font: font(12), labelFont: font(12), grid: { stroke: rule, width: 1 }, ticks: { stroke: rule, width: 1 } };
  const plot = new uPlot({
    width, height, padding: [10, xLabel ? 34 : Math.ceil(widthOf("30 May") / 2) + 2, 0, 0],
    tzDate: second => uPlot.tzDate(new Date(second * 1000), "Etc/UTC"),
    legend: { show: false },
    cursor: { sync: key ? { key, setSeries: false } : undefined, drag: { x: true, y: false, uni: 20 }, points: { size: 7 },
      ...(points ? { dataIdx: (chart, at) => at ? nearest : nearest = nearestTo(chart) } : {}) },
    scales: { x: { time: !xLabel, range: xRange }, y: logarithmic ? { distr: 3 } : { range: curve ? close : range } },
    axes: [
      { ...axis, ...across },
      { ...axis, label: yLabel, labelSize: 20, labelGap: 2, values: (_, values) => logarithmic
        ? values.map(value => value === null ? "" : String(Number(value.toPrecision(2)))) : tickTexts(values),
        size: (_, texts) => Math.ceil(Math.max(24, ...(texts ?? []).map(text => widthOf(text ?? "")))) + 16 },
    ],
    series: [{}, ...series.map(one => ({
      label: one.label, stroke: colour(one.colour), width: one.width ?? 1.6, dash: one.dash, spanGaps: Boolean(span),
      fill: one.fill ? `${colour(one.colour)}22` : undefined,
      paths: points ? () => null : one.stepped ? uPlot.paths.stepped({ align: 1 }) : undefined,
      points: { show: points || marks || (!one.stepped && one.values.length < 4), size: points ? 8 : 6, fill: points ? colour(one.colour) : undefined,
        ...(points && one.outline ? { stroke: colour(one.outline) } : {}) },
    }))],
    hooks: {
      setScale: [(chart, scale) => scale === "x" && onZoom?.(chart.scales.x.min, chart.scales.x.max, chart)],
      setCursor: [chart => onPoint?.(points && chart.cursor.idx !== null ? nearest : pointed(chart, isStepped))],
    },
  }, isStepped ? [prolonged(x, until), ...series.map(one => repeated(one.values))] : [x, ...series.map(one => one.values)], host);
  return plot;
}

// What stands for a line in the list of those shown.
export const lineSample = ({ colour: name, dash }) => svg("svg", { width: 26, height: 12, "aria-hidden": "true" },
  svg("line", { x1: 0, x2: 26, y1: 6, y2: 6, stroke: `var(${name})`, "stroke-width": 3, "stroke-dasharray": dash?.join(" ") }));

export const noCharts = () => make("p", { className: "note",
  textContent: "There are no charts: the command that made this page was built without the libraries that draw them." });
