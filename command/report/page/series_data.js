// The series of the run: by day where the page has their days, by month and year all of them.
import { data, stepWord, unpacked } from "./data.js";
import { dayOf, firstDayOf, isoMonth, isoOf, longDay, longMonth, monthOfDay, yearOfMonth } from "./days.js";
import { kSeriesColours } from "./colours.js";

const source = data.series ?? { list: [] };
export const all = source.list ?? [];
export const kMostShown = 8;

const first = dayOf(source.first ?? data.start ?? "1970-01-01"), step = source.step_days ?? 1, count = source.count ?? 0;
const firstMonth = monthOfDay(first);
const yearOf = day => yearOfMonth(monthOfDay(day));
const marksAbsence = one => one.quantity === "quality" || one.quantity === "store_quality";

function decoded(one, part) {
  one.decoded ??= {};
  return one.decoded[part] ??= unpacked(one[part]).map(value => value === -1 && marksAbsence(one) ? null : value);
}

// Days of the run in each month, by which means of months are weighed; where some have no value, of those that have one.
const monthDays = (() => {
  const days = [];
  for (let i = 0; i < count; ++i) {
    const at = monthOfDay(first + i * step) - firstMonth;
    days[at] = (days[at] ?? 0) + step;
  }
  return Array.from(days, value => value ?? 0);
})();

const weightOf = (one, month) => one.sum ? 1 : one.month_days?.[month] ?? monthDays[month] ?? 1;

const years = [...new Set(monthDays.map((_, i) => yearOfMonth(firstMonth + i)))];

function yearly(one) {
  const months = decoded(one, "months");
  return years.map(year => {
    let sum = 0, weight = 0;
    months.forEach((value, i) => {
      if (value === null || yearOfMonth(firstMonth + i) !== year) return;
      sum += value * weightOf(one, i);
      weight += weightOf(one, i);
    });
    return weight ? one.sum ? sum : sum / weight : null;
  });
}

export const hasDays = one => Boolean(one.days);

export function valuesOf(one, by) {
  if (by === "day") return hasDays(one) ? decoded(one, "days") : null;
  return by === "month" ? decoded(one, "months") : yearly(one);
}

// When each value is: seconds for the chart, words for the reader, ISO for files.
export function timesOf(by) {
  const days = by === "day" ? Array.from({ length: count }, (_, i) => first + i * step)
    : by === "month" ? monthDays.map((_, i) => firstDayOf(firstMonth + i)) : years.map(year => firstDayOf(year * 12));
  const last = firstMonth + monthDays.length - 1;
  const end = by === "month" ? firstDayOf(last + 1) : firstDayOf((yearOfMonth(last) + 1) * 12);
  return {
    seconds: days.map(day => day * 86400),
    until: by === "day" ? undefined : end * 86400,
    said: i => by === "day" ? longDay(days[i]) : by === "month" ? longMonth(firstMonth + i) : String(years[i]),
    iso: i => by === "day" ? isoOf(days[i]) : by === "month" ? isoMonth(firstMonth + i) : String(years[i]),
  };
}

// Which months or years have fewer days than the calendar: their sums are not those of the others.
export function partsSaid(by) {
  if (by === "day") return "";
  const last = first + (count - 1) * step, begin = day => by === "month" ? firstDayOf(monthOfDay(day)) : firstDayOf(yearOf(day) * 12);
  const next = by === "month" ? firstDayOf(monthOfDay(last) + 1) : firstDayOf((yearOf(last) + 1) * 12);
  const name = day => by === "month" ? longMonth(monthOfDay(day)) : String(yearOf(day));
  const parts = [...new Set([...(first > begin(first) ? [name(first)] : []), ...(last + step < next ? [name(last)] : [])])];
  return parts.length ? `Of ${parts.join(" and ")} only a part was run.` : "";
}

export const perTime = (one, by) => one.sum ? ` per ${by === "day" ? stepWord : by}` : "";

export function summed(one) {
  let sum = 0, weight = 0;
  decoded(one, "months").forEach((value, i) => {
    if (value === null) return;
    sum += value * weightOf(one, i);
    weight += weightOf(one, i);
  });
  return one.sum ? sum : weight ? sum / weight : null;
}

const kinds = { storage: "storage", quality: "quality", store_quality: "quality in stores", potential: "potentials", balance: "balance" };
export const kindOf = one => one.quantity === "flow" ? one.carries === "demand" ? "demand" : "water" : kinds[one.quantity] ?? one.quantity;

const net = data.network ?? {};

export function groupOf(one) {
  if (typeof one.of === "number") return net.groups?.[net.components?.[one.of]?.[2]]?.name ?? "";
  return /^group:(.*?)(?: type:.*)?$/.exec(one.of ?? "")?.[1] ?? "";
}

export function typeOf(one) {
  if (typeof one.of === "number") return net.types?.[net.components?.[one.of]?.[1]]?.name ?? "";
  return /(?:^| )type:(.*)$/.exec(one.of ?? "")?.[1] ?? "";
}

function variation(one) {
  const values = decoded(one, hasDays(one) ? "days" : "months").filter(value => value !== null);
  const mean = values.reduce((sum, value) => sum + value, 0) / (values.length || 1);
  const spread = Math.sqrt(values.reduce((sum, value) => sum + (value - mean) ** 2, 0) / (values.length || 1));
  return mean ? spread / Math.abs(mean) : 0;
}

// What says most: demand that was not met first, then what varies; never two that are alike.
export function firstShown() {
  const marked = all.filter(one => one.first_shown);
  if (marked.length) return marked.slice(0, kMostShown);
  const rank = one => (/deficit|unmet|short/.test(one.name) ? 1000 : 0) + Math.min(10, variation(one));
  const chosen = [], seen = new Set();
  for (const one of all.filter(each => each.quantity === "flow").slice(0, 2000).sort((a, b) => rank(b) - rank(a))) {
    if (chosen.length === 4 || seen.has(one.months) || !variation(one)) continue;
    seen.add(one.months);
    chosen.push(one);
  }
  return chosen.length ? chosen : [all.find(hasDays) ?? all[0]];
}

// Colours stay with a series as long as it is shown.
const places = new Map();

export function placed(shown) {
  for (const one of places.keys()) if (!shown.includes(one)) places.delete(one);
  for (const one of shown) {
    if (places.has(one)) continue;
    const taken = new Set(places.values());
    places.set(one, Array.from({ length: kMostShown }, (_, i) => i).find(i => !taken.has(i)));
  }
}

export function looks(one) {
  return { colour: kSeriesColours[places.get(one) ?? 0], dash: one.carries === "demand" ? [7, 4] : undefined };
}
