// Units that a person reads, chosen by size; the exact figure is kept for whoever wants it.
const kUnits = {
  L: [[1, "L"], [1e3, "m³"], [1e7, "ML", 1e6], [1e11, "GL", 1e9]],
  kWh: [[1, "kWh"], [1e4, "MWh", 1e3], [1e7, "GWh", 1e6]],
  kg: [[1, "kg"], [1e4, "t", 1e3]],
};
const kWords = { d: ["day", "days"], day: ["day", "days"], days: ["day", "days"], a: ["year", "years"], steps: ["step", "steps"] };

// As a person writes it: "EUR/m³".
export const unitText = unit => unit === "1" || unit === "-" ? "" : (unit ?? "").replace(/\bm2\b/g, "m²").replace(/\bm3\b/g, "m³");

// The unit for amounts up to `largest`: { unit, factor }, by which amounts are divided.
export function unitFor(unit, largest) {
  if (unit === "-" && Math.abs(largest) <= 1) return { unit: "%", factor: 0.01 };  // a share
  let found = { unit: unitText(unit), factor: 1 };
  for (const [from, name, factor = from] of kUnits[unit] ?? []) {
    if (Math.abs(largest) >= from) found = { unit: name, factor };
  }
  return kWords[unit] ? { unit: Math.abs(largest) === 1 ? kWords[unit][0] : kWords[unit][1], factor: 1 } : found;
}

export const largestOf = values => values.reduce((most, v) => Math.max(most, Math.abs(v ?? 0)), 0);

// Digits after the point, such that figures up to `size` have three to four that count.
export function digitsFor(size) {
  if (size === 0 || size >= 1000) return 0;
  if (size >= 10) return 1;
  if (size >= 1) return 2;
  return Math.min(8, 2 - Math.floor(Math.log10(size)));
}

export function number(value, digits) {
  if (value === null || value === undefined || !Number.isFinite(value)) return "–";
  const size = Math.abs(value);
  if (size !== 0 && (size < 1e-6 || size >= 1e15)) return value.toExponential(2).replace("-", "−");
  const shown = digits ?? (Number.isInteger(value) && size < 1e6 ? 0 : digitsFor(size));
  // What rounds to zero has no sign.
  const rounded = Number(value.toFixed(shown)) === 0 ? 0 : value;
  return rounded.toLocaleString("en", { minimumFractionDigits: shown, maximumFractionDigits: shown }).replace("-", "−");
}

// An amount in a unit that suits its size, as text.
export function amount(value, unit) {
  if (value === null || value === undefined) return "–";
  const chosen = unitFor(unit, value);
  return `${number(value / chosen.factor, chosen.unit === "%" ? 1 : undefined)}${chosen.unit ? ` ${chosen.unit}` : ""}`;
}

export function exact(value, unit) {
  if (value === null || value === undefined) return "no value";
  const text = value.toLocaleString("en", { maximumSignificantDigits: 12 });
  return unit && unit !== "1" && unit !== "-" ? `${text} ${unit}` : text;
}

export function percent(share) {
  if (share === null || share === undefined) return "–";
  const value = 100 * share;
  if (value > 0 && value < 0.1) return "< 0.1 %";
  if (value < 100 && value > 99.9) return "> 99.9 %";
  return `${number(value, value === 0 || value === 100 ? 0 : 1)} %`;
}

// For titles: "3,000 litres" says what "3 m³" hides.
export const hides = (value, unit) => kUnits[unit] || !Number.isInteger(value) ? exact(value, unit) : undefined;
