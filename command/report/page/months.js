// What was used in each month, by source, as bars one on the other; then the years as a table.
import { figure, isolated, make, opened, svg, table } from "./dom.js";
import { drawn, hideHint, legend, showHint, ticks, tickTexts, widthOf } from "./chart.js";
import { coloursOf } from "./colours.js";
import { longMonth, monthOf, shortMonths, yearOfMonth } from "./days.js";
import { amount, digitsFor, hides, largestOf, number, unitFor } from "./units.js";

const kHeight = 280, kBelow = 26, kAbove = 16;
const kNarrowestBar = 3;

const isWhole = (months, i) => months.whole?.[i] !== false;
const marked = (text, whole) => whole ? text : `${text}*`;

// Sums of years where the months are too many to be seen.
function bars(months, width) {
  const first = monthOf(months.first), count = Math.max(...months.series.map(one => one.values.length));
  if (count * kNarrowestBar <= width) {
    const whole = Array.from({ length: count }, (_, i) => isWhole(months, i));
    return { labels: whole.map((one, i) => marked(longMonth(first + i), one)), whole, series: months.series.map(one => one.values),
             years: Array.from({ length: count }, (_, i) => (first + i) % 12 === 0 || i === 0 ? yearOfMonth(first + i) : null), first };
  }
  const years = [...new Set(Array.from({ length: count }, (_, i) => yearOfMonth(first + i)))];
  const inYear = year => Array.from({ length: count }, (_, i) => i).filter(i => yearOfMonth(first + i) === year);
  const whole = years.map(year => inYear(year).length === 12 && inYear(year).every(i => isWhole(months, i)));
  return { labels: years.map((year, i) => marked(String(year), whole[i])), whole, years, yearly: true,
           series: months.series.map(one => years.map(year => one.values.reduce((sum, value, i) =>
             yearOfMonth(first + i) === year ? sum + (value ?? 0) : sum, 0))) };
}

function timeLabels(shown, left, step, count, base) {
  const texts = svg("g", { class: "axis" });
  let free = -Infinity;
  const put = (i, text) => {
    const x = left + i * step, width = widthOf(text);
    if (x < free) return false;
    texts.append(svg("text", { x, y: base + 18 }, text), svg("line", { x1: x, x2: x, y1: base, y2: base + 5 }));
    free = x + width + 10;
    return true;
  };
  const monthly = !shown.yearly && count <= 24;
  for (let i = 0; i < count; ++i) {
    if (monthly) put(i, (shown.first + i) % 12 === 0 || i === 0 ? `${shortMonths[(shown.first + i) % 12]} ${shown.years[i] ?? ""}`.trim()
      : shortMonths[(shown.first + i) % 12]);
    else if (shown.years[i] !== null && (i === 0 || i >= 2)) put(i, String(shown.years[i]));
  }
  return texts;
}

function picture(months, colours, width, unit) {
  const shown = bars(months, width - 60);
  const count = shown.labels.length;
  const totals = Array.from({ length: count }, (_, i) => shown.series.reduce((sum, values) => sum + Math.max(0, values[i] ?? 0), 0));
  const chosen = unitFor(unit, largestOf(totals));
  const marks = ticks(0, (largestOf(totals) || 1) / chosen.factor);
  const texts = tickTexts(marks);
  const left = Math.ceil(Math.max(...texts.map(text => widthOf(text)))) + 10;
  const base = kHeight - kBelow, step = (width - left - 4) / count, bar = Math.max(1, step - Math.min(3, step * 0.2));
  const y = value => base - (base - kAbove) * value / marks[marks.length - 1];
  const drawing = svg("svg", { width, height: kHeight, viewBox: `0 0 ${width} ${kHeight}`, role: "img",
    "aria-label": `Stacked bars of ${count} ${shown.yearly ? "years" : "months"}: ${months.series.map(one => one.label).join(", ")}. ` +
      `The largest is ${amount(largestOf(totals), unit)}. The table below holds the figures.` });
  drawing.append(svg("g", { class: "axis" }, ...marks.flatMap((mark, i) => [
    svg("line", { x1: left, x2: width - 4, y1: y(mark), y2: y(mark), class: "rule" }),
    svg("text", { x: left - 8, y: y(mark) + 4, "text-anchor": "end" }, texts[i])])));
  const ends = totals.map(() => 0);
  shown.series.forEach((values, s) => {
    let path = "";
    values.forEach((value, i) => {
      if (!(value > 0)) return;
      const low = y(ends[i] / chosen.factor), high = y((ends[i] + value) / chosen.factor);
      ends[i] += value;
      path += `M${(left + i * step).toFixed(2)},${low.toFixed(2)}h${bar.toFixed(2)}V${high.toFixed(2)}h${(-bar).toFixed(2)}z`;
    });
    drawing.append(svg("path", { d: path || "M0,0", fill: colours[s] }));
  });
  totals.forEach((total, i) => shown.whole[i] || drawing.append(svg("text", { class: "part", x: left + i * step + bar / 2,
    y: y(total / chosen.factor) - 1, "text-anchor": "middle" }, "*")));
  drawing.append(timeLabels(shown, left, step, count, base));
  drawing.addEventListener("pointermove", event => {
    const i = Math.floor((event.clientX - drawing.getBoundingClientRect().left - left) / step);
    if (i < 0 || i >= count) return hideHint();
    showHint(event, shown.labels[i], ...months.series.map((one, s) => `${isolated(one.label)}: ${amount(shown.series[s][i], unit)}`).reverse(),
      `total: ${amount(totals[i], unit)}`);
  });
  drawing.addEventListener("pointerleave", hideHint);
  return { drawing, unit: chosen.unit, yearly: shown.yearly, whole: shown.whole };
}

function monthTable(months) {
  const first = monthOf(months.first);
  const chosen = unitFor(months.unit, largestOf(months.series.flatMap(one => one.values)));
  const digits = digitsFor(largestOf(months.series.flatMap(one => one.values)) / chosen.factor);
  return table(`Months, in ${chosen.unit}`, [{ title: "month" }, ...months.series.map(one => ({ title: one.label, number: true }))],
    months.series[0].values.map((_, i) => [marked(longMonth(first + i), isWhole(months, i)), ...months.series.map(one =>
      cell(one.values[i], months.unit, chosen, digits))]));
}

function cell(value, unit, chosen, digits) {
  if (value === null || value === undefined) return "–";
  return make("span", { textContent: number(value / chosen.factor, Number.isInteger(value) && chosen.factor === 1 ? 0 : digits),
                        title: hides(value, unit) });
}

const kNamed = 6;

// What the sources beside the mains are: those of the flow diagram from which water reaches a user.
function otherSources(months, paths) {
  if (!paths || !months.series.some(one => one.kind === "other")) return "";
  const reaching = new Set(paths.nodes.filter(node => node.kind === "use").map(node => node.id));
  for (let size = 0; size < reaching.size;) {
    size = reaching.size;
    for (const link of paths.links) if (link.litres > 0 && reaching.has(link.to)) reaching.add(link.from);
  }
  const names = paths.nodes.filter(node => node.kind === "source" && node.label !== "Mains" && reaching.has(node.id))
    .sort((a, b) => b.litres - a.litres).map(node => isolated(node.label));
  const shown = names.length > kNamed ? [...names.slice(0, kNamed - 1), `${names.length - kNamed + 1} more`] : names;
  return shown.length ? `Other sources: ${shown.join(", ")}.` : "";
}

export function monthSection({ months, paths }) {
  if (!months?.series?.length) return null;
  const series = months.series.filter(one => one.values.some(value => value));
  if (!series.length) return null;
  const kept = { ...months, series };
  const colours = coloursOf(series);
  const note = make("span", {});
  const host = make("div", { className: "chart" });
  const keys = legend(series.map((one, i) => ({ label: one.label, colour: colours[i] })));
  const part = make("p", { className: "note" });
  const others = otherSources(kept, paths);
  const body = [figure("What was used in each month, by source.", keys, host, others ? make("p", { className: "note", textContent: others }) : null, part), opened("As a table", () => monthTable(kept))];
  const draw = width => {
    const { drawing, unit, yearly, whole } = picture(kept, colours, width, months.unit);
    note.textContent = `What was used, in ${unit} ${yearly ? "a year" : "a month"}, by where it came from.`;
    part.textContent = `* Only a part of this ${yearly ? "year" : "month"} was run.`;
    part.hidden = whole.every(one => one);
    host.replaceChildren(drawing);
  };
  return { id: "months", title: "Month by month", note, body, ready: () => drawn(host, draw)() };
}

const kMostColumns = 8;

// Rows of the same quantity have the same unit, unless one is far smaller.
function unitOfRow({ unit, values }, rows) {
  const shared = unitFor(unit, largestOf(rows.filter(row => row.unit === unit).map(row => largestOf(row.values))));
  return largestOf(values) >= 0.1 * shared.factor ? shared : unitFor(unit, largestOf(values));
}

// Years across while they fit, else down; so no sheet of paper cuts them.
export function yearSection({ years }) {
  if (!years?.rows?.length || !years.years.length) return null;
  const title = i => marked(String(years.years[i]), years.whole?.[i] !== false);
  const rows = years.rows.map(row => {
    const chosen = unitOfRow(row, years.rows);
    const digits = row.values.every(value => Number.isInteger(value ?? 0)) && chosen.factor === 1 ? 0
      : digitsFor(largestOf(row.values) / chosen.factor);
    return { ...row, shownUnit: chosen.unit, cells: row.values.map(value => cell(value, row.unit, chosen, digits)) };
  });
  const body = [];
  if (years.years.length <= kMostColumns) {
    body.push(table("Years", [{ title: "quantity" }, { title: "unit" }, ...years.years.map((_, i) => ({ title: title(i), number: true }))],
      rows.map(row => [row.label, row.shownUnit, ...row.cells])));
  } else {
    for (let from = 0; from < rows.length; from += kMostColumns - 2) {
      const some = rows.slice(from, from + kMostColumns - 2);
      body.push(table("Years", [{ title: "year" }, ...some.map(row => ({ title: `${row.label} [${row.shownUnit}]`, number: true }))],
        years.years.map((_, i) => [title(i), ...some.map(row => row.cells[i])])));
    }
  }
  if (years.whole?.some(whole => whole === false)) {
    body.push(make("p", { className: "note", textContent: "* Only a part of this year was run." }));
  }
  return { id: "years", title: "Year by year", note: "Sums of each year.", how: "Point at a figure for its exact value.", body };
}
