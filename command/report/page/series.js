// All series: a list to choose from, and the chart of those that are chosen.
import { button, choice, figure, isolated, make, named, switcher, table } from "./dom.js";
import { address, onAddress, remember } from "./address.js";
import { drawn } from "./chart.js";
import { data, stepWord } from "./data.js";
import { isoOf } from "./days.js";
import { canDraw, lineSample, noCharts } from "./lines.js";
import { all, firstShown, groupOf, hasDays, kindOf, kMostShown, looks, partsSaid, placed, summed, timesOf, typeOf } from "./series_data.js";
import { emptyChart, SeriesChart } from "./series_chart.js";
import { amount, hides, number } from "./units.js";

const kListed = 100, kRows = 300;

const total = (one, remark = "") => make("span", { className: "total", title: hides(summed(one), one.unit),
  textContent: `${one.sum ? "" : "mean "}${amount(summed(one), one.unit)}${remark}` });

const occurring = of => [...new Set(all.map(of))].filter(name => name).sort();

class SeriesSection {
  constructor() {
    this.host = make("div", { className: "chart lines", role: "img" });
    this.chart = new SeriesChart(this.host, index => this.point(index));
    this.chart.onZoom = () => this.showRange();
    this.filters = { text: "", kind: "", group: "", type: "" };
    this.items = make("ul", { className: "items" });
    this.status = make("p", { className: "note", role: "status" });
    this.keys = make("ul", { className: "keys" });
    this.when = make("p", { className: "note when" });
    this.hint = make("p", { className: "note" });
    this.read();
    onAddress(() => {
      this.read();
      this.byMonth.show(this.by);
      this.as.show(address.as ?? "time");
      this.changed(false);
      this.host.scrollIntoView({ block: "center" });
    });
  }

  read() {
    const byName = new Map(all.map(one => [one.name, one]));
    const asked = (address.series ?? []).map(name => byName.get(name)).filter(one => one).slice(0, kMostShown);
    this.shown = asked.length ? asked : firstShown();
    this.ordered();
    this.by = ["day", "month", "year"].includes(address.by) ? address.by : this.shown.every(hasDays) ? "day" : "month";
    placed(this.shown);
  }

  list() {
    const field = make("input", { type: "search", placeholder: "Search by name", "aria-label": "Search series",
      oninput: () => this.filter("text", field.value.trim().toLowerCase()) });
    const filters = [["kind", "Kind", kindOf], ["group", "Group", groupOf], ["type", "Type", typeOf]].map(([key, label, of]) => {
      const names = occurring(of);
      return names.length > 1 ? choice(label, [["", "all"], ...names.map(name => [name, name])], "", value => this.filter(key, value)) : null;
    });
    return make("div", { className: "finder screen" }, field, make("div", { className: "filters" }, ...filters.filter(one => one)), this.items, this.status);
  }

  filter(key, value) {
    this.filters[key] = value;
    this.showList();
  }

  showList() {
    const { text, kind, group, type } = this.filters;
    const found = all.filter(one => (!text || one.name.toLowerCase().includes(text)) && (!kind || kindOf(one) === kind) &&
      (!group || groupOf(one) === group) && (!type || typeOf(one) === type));
    const full = this.shown.length >= kMostShown;
    this.items.replaceChildren(...found.slice(0, kListed).map(one => {
      const box = make("input", { type: "checkbox", checked: this.shown.includes(one), disabled: full && !this.shown.includes(one) });
      box.onchange = () => this.toggle(one);
      return make("li", {}, make("label", {}, box, named(one.name), total(one, hasDays(one) ? "" : ", months only")));
    }));
    const omitted = data.series.omitted ? ` ${data.series.omitted_note?.replace(/\.?$/, ".") ?? `${number(data.series.omitted)} more are in the results.`}` : "";
    this.status.textContent = (found.length > kListed ? `The first ${kListed} of ${number(found.length)}: search for others.`
      : found.length === 1 ? "1 series." : `${number(found.length)} series.`) +
      (full ? ` Eight are shown, which is the most; leave one out to choose another.` : "") + omitted;
  }

  toggle(one) {
    this.shown = this.shown.includes(one) ? this.shown.filter(other => other !== one) : [...this.shown, one];
    this.changed();
  }

  // Another part of the page asks for these.
  show(series) {
    this.shown = series.slice(0, kMostShown);
    if (this.by === "day" && !this.shown.every(hasDays)) this.setBy("month");
    this.changed();
    this.host.scrollIntoView({ block: "center" });
  }

  setBy(by) {
    this.by = by;
    this.byMonth.show(by);
  }

  changed(byReader = true) {
    placed(this.shown);
    if (byReader) remember({ series: this.shown.map(one => one.name), by: this.by });
    this.showList();
    this.redraw();
  }

  controls() {
    const options = [["day", stepWord === "day" ? "Day" : "Step"], ["month", "Month"], ["year", "Year"]];
    this.byMonth = switcher("Resolution", all.some(hasDays) ? options : options.slice(1), this.by, by => {
      this.by = by;
      this.changed();
    });
    this.as = switcher("Form", [["time", "Over time"], ["sorted", "Duration curve"]], address.as ?? "time", as => {
      remember({ as });
      this.redraw();
    });
    const limit = name => make("input", { type: "date", onchange: event => {
      remember({ [name]: event.target.value || undefined });
      const other = name === "from" ? "to" : "from";
      if (event.target.value && !address[other]) remember({ [other]: this.ends()[other] });
      this.redraw();
    },
    onblur: event => {
      if (Object.values(this.limits).includes(event.relatedTarget)) return;  // the other date comes next
      this.ordered();
      this.showRange();
    } });
    this.limits = { from: limit("from"), to: limit("to") };
    const logarithmic = make("input", { type: "checkbox", checked: address.scale === "log", onchange: () => {
      remember({ scale: logarithmic.checked ? "log" : undefined });
      this.redraw();
    } });
    this.log = make("label", { className: "choice" }, logarithmic, make("span", { textContent: "logarithmic" }));
    this.range = make("span", { className: "range" }, make("label", { className: "choice" }, make("span", { textContent: "From" }), this.limits.from),
      make("label", { className: "choice" }, make("span", { textContent: "to" }), this.limits.to),
      button("All days", () => {
        remember({ from: undefined, to: undefined });
        this.redraw();
      }));
    return make("div", { className: "controls" }, this.byMonth, this.as, this.range, this.log,
      make("span", { className: "end" }, button("Save CSV", () => this.chart.saveCsv()), button("Save PNG", () => this.chart.savePng())));
  }

  ends() {
    const seconds = timesOf("day").seconds;
    return { from: isoOf((seconds[0] ?? 0) / 86400), to: isoOf((seconds[seconds.length - 1] ?? 0) / 86400) };
  }

  // Dates that were given the wrong way round, or beyond the run.
  ordered() {
    if (!address.from || !address.to) return;
    const ends = this.ends(), [from, to] = [address.from, address.to].sort();
    const isInside = from <= ends.to && to >= ends.from;
    const kept = isInside ? { from: from < ends.from ? ends.from : from, to: to > ends.to ? ends.to : to } : { from: undefined, to: undefined };
    if (kept.from !== address.from || kept.to !== address.to) remember(kept);
  }

  showRange() {
    const ends = this.ends();
    for (const name of ["from", "to"]) {
      Object.assign(this.limits[name], { min: ends.from, max: ends.to, value: address[name] ?? ends[name] });
    }
  }

  showKeys() {
    this.values = new Map();
    this.keys.replaceChildren(...this.shown.map(one => {
      const value = make("span", { className: "value" });
      this.values.set(one, value);
      return make("li", {}, lineSample(looks(one)), named(one.name), value,
        button("×", () => this.toggle(one), { className: "remove screen", "aria-label": `Leave out ${one.name}` }));
    }));
  }

  point(index) {
    const { when, found } = this.chart.readout(index);
    this.when.textContent = when || " ";
    for (const [one, node] of this.values ?? []) node.textContent = found.get(one) ?? "";
  }

  showHint() {
    const without = this.by === "day" ? this.shown.filter(one => !hasDays(one)) : [];
    const hints = [without.length && `${without.map(one => isolated(one.name)).join(", ")}: this page has months only; ` +
      `"kesto report --series" chooses which series have days.`,
    this.shown.some(one => one.sum) && partsSaid(this.by)].filter(text => text);
    this.hint.textContent = hints.join(" ");
    this.hint.hidden = !hints.length;
    this.range.hidden = address.as === "sorted";
    this.log.hidden = address.as !== "sorted";
  }

  body() {
    const caption = figure("The series chosen on the page.", this.keys, this.when, this.host);
    this.redraw = drawn(this.host, width => {
      this.showKeys();
      this.showHint();
      this.showRange();
      this.chart.draw(width, this.shown, this.by);
      if (!this.shown.length) this.host.append(emptyChart());
      this.host.setAttribute("aria-label", `Lines by ${this.by}: ${this.shown.map(one => one.name).join(", ") || "none chosen"}.`);
      this.point(null);
    });
    return [make("div", { className: "split" }, this.list(), make("div", { className: "stage" }, this.controls(), this.hint, caption))];
  }

  ready() {
    this.showList();
    this.redraw();
    if (address.series) this.host.scrollIntoView({ block: "center" });
  }
}

// What remains of the list without charts.
function totals() {
  return [table("Series", [{ title: "series" }, { title: "kind" }, { title: "total or mean", number: true }], all.slice(0, kRows).map(one =>
    [named(one.name), kindOf(one), total(one)])),
  ...(all.length > kRows ? [make("p", { className: "note", textContent: `The first ${kRows} of ${number(all.length)}; all are in the results.` })] : [])];
}

let section = null;

export function showSeries(list) {
  section?.show(list);
}

export function seriesSection() {
  if (!all.length) return null;
  const head = { id: "series", title: "All series",
    note: "Any flow, storage, quality or potential over time; demands are dashed.",
    how: "Choose up to eight. Drag over the chart to zoom, double-click to see all days. The address of the page remembers what is shown." };
  if (!canDraw()) return { ...head, how: "", note: "Totals and means of the whole period.", body: [noCharts(), ...totals()] };
  section = new SeriesSection();
  return { ...head, body: section.body(), ready: () => section.ready() };
}
