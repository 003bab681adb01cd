// What all charts share: when they are drawn, their axes, the hint under the pointer.
import { make, svg } from "./dom.js";
import { number } from "./units.js";

const kPrinted = 680;  // pixels of an A4 page between its margins
const drawings = [];
let printing = false;

// Calls draw(width) whenever the host has another width, the colours change, or the page goes to the printer.
export function drawn(host, draw, { least = 280 } = {}) {
  const one = { host, width: 0, draw };
  one.now = () => {
    const width = printing ? kPrinted : Math.max(least, Math.floor(host.clientWidth));
    if (!printing && !host.clientWidth) return;  // not shown, or not in the page yet
    one.width = width;
    draw(width);
  };
  drawings.push(one);
  new ResizeObserver(() => {
    if (!printing && host.clientWidth && Math.max(least, Math.floor(host.clientWidth)) !== one.width) one.now();
  }).observe(host);
  return one.now;
}

function drawAll() {
  for (const one of drawings) if (one.host.isConnected) one.now();
}

export function watchPage() {
  addEventListener("beforeprint", () => {
    printing = true;
    document.documentElement.classList.add("printing");
    drawAll();
  });
  addEventListener("afterprint", () => {
    printing = false;
    document.documentElement.classList.remove("printing");
    drawAll();
  });
  matchMedia("(prefers-color-scheme: dark)").addEventListener("change", drawAll);
}

// A colour of the page, for what cannot name it.
export const colour = name => getComputedStyle(document.documentElement).getPropertyValue(name).trim();

export function font(size = 12) {
  return `${size}px ${getComputedStyle(document.body).fontFamily}`;
}

const pencil = document.createElement("canvas").getContext("2d");

export function widthOf(text, size = 12) {
  const wanted = font(size);
  if (pencil.font !== wanted) pencil.font = wanted;
  return pencil.measureText(text).width;
}

// The longest beginning that fits.
function cut(text, width, size) {
  if (widthOf(text, size) <= width) return text;
  const letters = [...text];
  let low = 0, high = letters.length;
  while (low < high) {
    const middle = Math.ceil((low + high) / 2);
    if (widthOf(`${letters.slice(0, middle).join("").trimEnd()}…`, size) <= width) low = middle;
    else high = middle - 1;
  }
  return `${letters.slice(0, low).join("").trimEnd()}…`;
}

// A word that is too wide, in parts: where a name has joints, "well_" and "works".
function parted(word, width, size) {
  const parts = [];
  for (const piece of widthOf(word, size) <= width ? [word] : word.split(/(?<=[_.:/-])(?=[^_.:/-])/)) {
    const last = parts.length - 1;
    if (last >= 0 && widthOf(parts[last] + piece, size) <= width) parts[last] += piece;
    else parts.push(piece);
  }
  return parts;
}

// Lines no wider than `width`, at most `most`; what does not fit ends with three dots.
export function wrapped(text, width, most, size = 12) {
  const pieces = String(text).split(/\s+/).filter(word => word)
    .flatMap(word => parted(word, width, size).map((part, i) => ({ part, space: i ? "" : " " })));
  const lines = [], joined = (line, { part, space }) => line + space + part;
  while (pieces.length && lines.length < most) {
    let line = pieces.shift().part;
    while (pieces.length && widthOf(joined(line, pieces[0]), size) <= width) line = joined(line, pieces.shift());
    const isLast = lines.length === most - 1;
    lines.push(cut(isLast ? pieces.reduce(joined, line) : line, width, size));
  }
  return lines;
}

// Round numbers from 0 or below it to `high`.
export function ticks(low, high, about = 5) {
  const span = high - low || 1;
  const raw = span / about;
  const power = 10 ** Math.floor(Math.log10(raw));
  const step = [1, 2, 5, 10].map(times => times * power).find(size => size >= raw * 0.999);
  const first = Math.floor(low / step + 1e-9), last = Math.ceil(high / step - 1e-9);
  return Array.from({ length: last - first + 1 }, (_, i) => (first + i) * step);
}

// With as many digits as the steps between them have: 2.5 apart they are 357.5 and 360.0.
export function tickTexts(values) {
  const step = values.length > 1 ? Math.abs(values[1] - values[0]) : 1;
  const isWhole = digits => Math.abs(step * 10 ** digits - Math.round(step * 10 ** digits)) < 1e-6 * step * 10 ** digits;
  let digits = Math.max(0, Math.min(8, -Math.floor(Math.log10(step) + 1e-9)));
  while (digits < 8 && !isWhole(digits)) ++digits;
  return values.map(value => number(value, digits));
}

const hint = make("div", { className: "hint", hidden: true, "aria-hidden": "true" });

// Text beside the pointer.
export function showHint(event, ...lines) {
  if (!hint.isConnected) document.body.append(hint);
  hint.replaceChildren(...lines.map((text, i) => make(i ? "div" : "strong", { textContent: text })));
  hint.hidden = false;
  const { clientWidth, clientHeight } = document.documentElement;
  const box = hint.getBoundingClientRect();
  const left = event.clientX + 14 + box.width > clientWidth ? event.clientX - 14 - box.width : event.clientX + 14;
  const top = event.clientY + 14 + box.height > clientHeight ? event.clientY - 14 - box.height : event.clientY + 14;
  hint.style.left = `${Math.max(4, left)}px`;
  hint.style.top = `${Math.max(4, top)}px`;
}

export function hideHint() {
  hint.hidden = true;
}

export function hinted(node, lines) {
  node.addEventListener("pointermove", event => {
    const said = lines(event);
    if (said) showHint(event, ...said);
    else hideHint();
  });
  node.addEventListener("pointerleave", hideHint);
  return node;
}

export function legend(entries) {
  return make("ul", { className: "legend" }, ...entries.map(({ label, colour: fill, dash }) => make("li", {},
    svg("svg", { width: 22, height: 12, "aria-hidden": "true" }, dash === undefined
      ? svg("rect", { x: 5, width: 12, height: 12, rx: 2, fill })
      : svg("line", { x1: 0, x2: 22, y1: 6, y2: 6, stroke: fill, "stroke-width": 2.5, "stroke-dasharray": dash })),
    make("bdi", { textContent: label }))));
}
