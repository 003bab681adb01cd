// Members of a sweep by what their colour stands for, and whether a line may join them.
import { kSeriesColours } from "./colours.js";
import { largestOf, unitFor } from "./units.js";

const kScale = ["--scale-1", "--scale-2", "--scale-3", "--scale-4", "--scale-5"];  // from little to much
const kMostLines = 40;
const kOwn = "as in the model";

const naturally = new Intl.Collator("en", { numeric: true }).compare;

export const isNumeric = ({ values }) => values.every(value => value === null || typeof value === "number") && values.some(value => value !== null);
export const isNothing = value => value === null || value === undefined || value === "";

// Numbers by size, texts in natural order; what the model has itself comes first.
export function differentOf(values) {
  return [...new Set(values)].sort((a, b) => isNothing(a) || isNothing(b) ? isNothing(b) - isNothing(a)
    : typeof a === "number" ? a - b : naturally(a, b));
}

export const unitOf = key => isNumeric(key) ? unitFor(key.unit, largestOf(key.values)) : { unit: "", factor: 1 };

// As a reader writes it, in the unit that suits all values of the key.
export function keyText(key, value, { withUnit = true, digits = 7 } = {}) {
  if (isNothing(value)) return kOwn;
  if (typeof value !== "number") return String(value);
  const { unit, factor } = unitOf(key), shown = (value / factor).toLocaleString("en", { maximumSignificantDigits: digits }).replace("-", "−");
  return withUnit && unit ? `${shown} ${unit}` : shown;
}

// Runs of values that hold as many each, so that none is empty.
function classesOf(key, values) {
  return kScale.map((colour, i) => {
    const own = values.slice(Math.round(i * values.length / kScale.length), Math.round((i + 1) * values.length / kScale.length));
    return { colour, outline: "--soft", values: own,
             name: `${keyText(key, own[0], { withUnit: false, digits: 4 })} to ${keyText(key, own[own.length - 1], { digits: 4 })}` };
  });
}

// What each colour stands for, [{ name, colour, values }], in order: values, classes of them where they are many, or as
// many texts as there are colours and the rest.
export function coloursFor(key) {
  const values = differentOf(key.values), most = kSeriesColours.length;
  if (values.length <= most) return values.map((value, i) => ({ name: keyText(key, value), colour: kSeriesColours[i], values: [value] }));
  if (!isNumeric(key)) {
    const rest = values.slice(most - 1);
    return [...values.slice(0, most - 1).map((value, i) => ({ name: keyText(key, value), colour: kSeriesColours[i], values: [value] })),
            { name: `${rest.length} others`, colour: "--grey", values: rest }];
  }
  const own = values.filter(isNothing).map(value => ({ name: kOwn, colour: "--grey", values: [value] }));
  return [...own, ...classesOf(key, values.filter(value => !isNothing(value)))];
}

// Only what stands across varies among these members, and each place occurs once.
function isOneCurve(keys, across, members) {
  const varies = key => key !== across && new Set(members.map(i => key.values[i])).size > 1;
  return !keys.some(varies) && new Set(members.map(i => across.values[i])).size === members.length;
}

// `groups`: what each series of the chart holds. `isCurve`: lines may join its members, for each is a curve over one key.
export function seriesOf(keys, across, by, members) {
  const colours = by ? coloursFor(by) : [{ name: "", colour: kSeriesColours[0], values: null }];
  const withMembers = list => list.map(one => ({ ...one, members: one.values ? members.filter(i => one.values.includes(by.values[i])) : members }));
  const mayJoin = groups => keys.includes(across) && isNumeric(across) && groups.every(one => isOneCurve(keys, across, one.members)) &&
    groups.some(one => one.members.length > 1);
  const groups = withMembers(colours);
  if (mayJoin(groups)) return { colours, groups, isCurve: true };
  // A line for each value, in the colour of its class.
  const single = colours.flatMap(one => (one.values ?? []).map(value => ({ ...one, values: [value] })));
  if (single.length > colours.length && single.length <= kMostLines) {
    const apart = withMembers(single);
    if (mayJoin(apart)) return { colours, groups: apart, isCurve: true };
  }
  return { colours, groups, isCurve: false };
}
