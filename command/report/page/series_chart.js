// The chart of the chosen series: one panel for each unit, all with the same days.
import { make } from "./dom.js";
import { address, remember } from "./address.js";
import { data } from "./data.js";
import { dayOf, isoOf } from "./days.js";
import { lines } from "./lines.js";
import { csv, fileName, picture, save } from "./files.js";
import { looks, perTime, timesOf, valuesOf } from "./series_data.js";
import { largestOf, number, unitFor } from "./units.js";

const kShares = 500;

// A flow in litres and a storage in litres are two things.
function panelsOf(shown, by) {
  const panels = new Map();
  for (const one of shown) {
    const values = valuesOf(one, by);
    if (!values) continue;
    const key = `${one.unit} ${one.sum}`;
    const panel = panels.get(key) ?? { unit: one.unit, suffix: perTime(one, by), rows: [] };
    panel.rows.push({ one, values });
    panels.set(key, panel);
  }
  for (const panel of panels.values()) {
    const most = panel.rows.reduce((largest, row) => Math.max(largest, largestOf(row.values)), 0);
    panel.chosen = unitFor(panel.unit, most);
  }
  return [...panels.values()];
}

// The share of days on which it was at least as high.
function duration(values) {
  const sorted = values.filter(value => value !== null).sort((a, b) => b - a);
  return Array.from({ length: kShares + 1 }, (_, i) =>
    sorted.length ? sorted[Math.min(sorted.length - 1, Math.floor(i / kShares * sorted.length))] : null);
}

export class SeriesChart {
  constructor(host, onPoint) {
    this.host = host;
    this.onPoint = onPoint;
    this.plots = [];
  }

  // The zoom in seconds, or null for all days.
  zoom() {
    if (address.as === "sorted" || !address.from || !address.to) return null;
    const [first, last] = [dayOf(address.from) * 86400, dayOf(address.to) * 86400].sort((a, b) => a - b);
    const { seconds } = this.times, min = Math.max(first, seconds[0]), max = Math.min(last, this.times.until ?? seconds[seconds.length - 1]);
    if (!(min <= max)) return null;  // no dates, or none of the run
    return min < max ? { min, max } : { min: min - 43200, max: max + 43200 };
  }

  draw(width, shown, by) {
    this.plots.forEach(plot => plot.destroy());
    this.host.replaceChildren();
    this.by = by;
    this.shown = shown;
    this.times = timesOf(by);
    this.panels = panelsOf(shown, by);
    const sorted = address.as === "sorted";
    const height = [0, 320, 230, 190][Math.min(3, this.panels.length)];
    this.plots = this.panels.map(panel => lines(this.host, {
      width, height, key: "series",
      x: sorted ? Array.from({ length: kShares + 1 }, (_, i) => 100 * i / kShares) : this.times.seconds,
      until: this.times.until,
      xLabel: sorted ? "share of the time at least as high [%]" : undefined,
      logarithmic: sorted && address.scale === "log",
      yLabel: `${panel.chosen.unit || "value"}${panel.suffix}`,
      series: panel.rows.map(({ one, values }) => ({ label: one.name, ...looks(one), stepped: by !== "day" && !sorted,
        values: this.scaled(sorted ? duration(values) : values, panel.chosen.factor, sorted) })),
      onZoom: (min, max, chart) => sorted || this.zoomed(min, max, chart),
      onPoint: this.onPoint,
    }));
    const zoom = this.zoom();
    this.quiet = true;
    if (zoom) this.plots.forEach(plot => plot.setScale("x", zoom));
    queueMicrotask(() => { this.quiet = false; });
  }

  // A logarithm knows no zero.
  scaled(values, factor, sorted) {
    const positive = sorted && address.scale === "log";
    return values.map(value => value === null || (positive && !(value > 0)) ? null : value / factor);
  }

  zoomed(min, max, chart) {
    if (this.quiet || !this.plots.includes(chart)) return;
    const seconds = this.times.seconds, whole = min <= seconds[0] && max >= seconds[seconds.length - 1];
    const from = whole ? undefined : isoOf(Math.round(min / 86400)), to = whole ? undefined : isoOf(Math.round(max / 86400));
    if (from === address.from && to === address.to) return;
    remember({ from, to });
    this.quiet = true;
    this.plots.forEach(plot => plot === chart || plot.setScale("x", { min, max }));
    queueMicrotask(() => { this.quiet = false; });
    this.onZoom?.();
  }

  // What the lines say at one place, for the list of those that are shown.
  readout(index) {
    const found = new Map();
    for (const panel of this.panels ?? []) {
      for (const { one, values } of panel.rows) {
        const value = index === null ? null : address.as === "sorted" ? duration(values)[index] : values[index];
        found.set(one, value === null || value === undefined ? "" : `${number(value / panel.chosen.factor)} ${panel.chosen.unit}`);
      }
    }
    const when = index === null ? "" : address.as === "sorted" ? `${number(100 * index / kShares, 1)} % of the time` : this.times.said(index);
    return { when, found };
  }

  rowsSeen() {
    const zoom = this.zoom();
    return this.times.seconds.map((second, i) => ({ second, i })).filter(({ second }) => !zoom || (second >= zoom.min && second <= zoom.max));
  }

  saveCsv() {
    const rows = this.panels.flatMap(panel => panel.rows);
    const head = rows.map(({ one }) => `${one.name} [${one.unit}${perTime(one, this.by)}]`);
    const body = address.as === "sorted"
      ? Array.from({ length: kShares + 1 }, (_, i) => [100 * i / kShares, ...rows.map(({ values }) => duration(values)[i])])
      : this.rowsSeen().map(({ i }) => [this.times.iso(i), ...rows.map(({ values }) => values[i])]);
    save(fileName(`${data.title} series`, "csv"), csv([address.as === "sorted" ? "share of time [%]" : this.by === "day" ? "date" : this.by, ...head], body));
  }

  savePng() {
    const entries = this.panels.flatMap(panel => panel.rows.map(({ one }) => ({ label: one.name, ...looks(one) })));
    picture(data.title, entries, this.plots, blob => save(fileName(`${data.title} series`, "png"), blob));
  }
}

export const emptyChart = () => make("p", { className: "note", textContent: "Choose a series from the list." });
