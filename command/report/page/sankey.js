// Where the water comes from and goes. d3-sankey places nodes and bands; the labels decide how much room there must be, so
// that no two touch: a column's nodes stand apart by the height of a label, and a label is no wider than its column.
import { figure, isolated, make, opened, scrolled, svg, table } from "./dom.js";
import { drawn, hinted, widthOf, wrapped } from "./chart.js";
import { colourOf } from "./colours.js";
import { digitsFor, exact, hides, largestOf, number, unitFor } from "./units.js";

const kNode = 10, kGap = 8, kLine = 15, kApart = 8;
const kSide = 180;      // the widest label beside the picture
const kNarrowest = 84;  // pixels that a column needs for a label
const kSmallest = 10;   // letters of a name that would else be cut

// Links that close a loop, as reuse does: they run back beneath the picture, for the layout knows no loops.
function returning(nodes, links) {
  const after = new Map(nodes.map(node => [node.id, []]));
  links.forEach(link => after.get(link.from)?.push(link));
  const state = new Map(), back = new Set();
  const visit = start => {
    const path = [{ id: start, next: 0 }];
    state.set(start, 1);
    while (path.length) {
      const top = path[path.length - 1], link = after.get(top.id)[top.next++];
      if (!link) {
        state.set(top.id, 2);
        path.pop();
      } else if (state.get(link.to) === 1) {
        back.add(link);
      } else if (!state.has(link.to) && after.has(link.to)) {
        state.set(link.to, 1);
        path.push({ id: link.to, next: 0 });
      }
    }
  };
  const rank = { source: 0, store: 1, use: 2, works: 3, sink: 4 };
  [...nodes].sort((a, b) => (rank[a.kind] ?? 5) - (rank[b.kind] ?? 5)).forEach(node => state.has(node.id) || visit(node.id));
  return back;
}

// Of several years their mean; a run of one year has the figures of its tables.
const isPerYear = paths => paths.years >= 1.5;

// One unit for the whole picture.
function scaleOf(paths) {
  const perYear = isPerYear(paths);
  const share = perYear ? 1 / paths.years : 1;
  const most = largestOf(paths.nodes.map(node => node.litres)) * share;
  const chosen = unitFor("L", most);
  const digits = Math.max(1, digitsFor(most / chosen.factor));
  return { perYear, text: litres => {
    const value = litres * share / chosen.factor;
    const shown = value !== 0 && Math.abs(value) < 10 ** -digits / 2 ? `< ${number(10 ** -digits, digits)}` : number(value, digits);
    return `${shown} ${chosen.unit}${perYear ? "/a" : ""}`;
  } };
}

class Picture {
  constructor(paths, width) {
    this.paths = paths;
    this.scale = scaleOf(paths);
    this.back = returning(paths.nodes, paths.links);
    this.nodes = paths.nodes.map(node => ({ ...node, fixedValue: this.throughput(node) })).filter(node => node.fixedValue > 0);
    const known = new Set(this.nodes.map(node => node.id));
    const whole = paths.links.filter(link => known.has(link.from) && known.has(link.to) && link.litres > 0);
    this.links = whole.filter(link => !this.back.has(link)).map(link =>
      ({ source: link.from, target: link.to, value: link.litres, link }));
    this.returns = whole.filter(link => this.back.has(link));
    this.size(width);
  }

  throughput(node) {
    const sum = side => this.paths.links.reduce((total, link) => total + (link[side] === node.id ? link.litres : 0), 0);
    return Math.max(sum("from"), sum("to"));
  }

  layout(width, height, padding) {
    const sankey = d3.sankey().nodeId(node => node.id).nodeWidth(kNode).nodePadding(padding).iterations(32)
      .nodeAlign((node, columns) => node.sourceLinks.length || node.kind !== "sink" ? node.depth : columns - 1)
      .extent([[0, 0], [width, height]]);
    return sankey({ nodes: this.nodes.map(node => ({ ...node })), links: this.links.map(link => ({ ...link })) });
  }

  // First the columns, then the labels that fit them, then the height that the labels need.
  size(width) {
    const { nodes } = this.layout(100, 100, 1);
    this.columns = 1 + Math.max(...nodes.map(node => node.layer));
    const layer = new Map(nodes.map(node => [node.id, node.layer]));
    this.beside = width >= 720;
    this.font = this.beside ? 13 : 11.5;
    const { font } = this;
    const widest = side => Math.min(kSide, Math.ceil(Math.max(...this.nodes.filter(node => layer.get(node.id) === side)
      .flatMap(node => [node.label, this.scale.text(this.amountOf(node))]).map(text => widthOf(text, font)))) + kGap + 4);
    this.left = this.beside ? widest(0) : 0;
    this.right = Math.min(widest(this.columns - 1), this.beside ? kSide : kNarrowest);
    this.width = this.beside ? width : Math.max(width, this.columns * kNarrowest);
    this.slot = (this.width - this.left - this.right - kNode) / Math.max(1, this.columns - 1) - kNode;
    this.labels = new Map();
    let tallest = kLine;
    for (const node of this.nodes) {
      const column = layer.get(node.id);
      const room = (this.beside && column === 0 ? this.left : column === this.columns - 1 ? this.right : this.slot) - 2 * kGap + 4;
      const lines = this.nameLines(node.label, room)
        .concat(wrapped(this.scale.text(this.amountOf(node)), room, 2, font - 1).map(text => ({ text, size: font - 1 })));
      this.labels.set(node.id, lines);
      tallest = Math.max(tallest, lines.length * kLine);
    }
    this.top = tallest / 2 + 2;
    const padding = tallest + kApart;
    const counts = Array.from({ length: this.columns }, (_, i) => nodes.filter(node => node.layer === i).length);
    const bands = Math.max(150, Math.min(300, this.width * 0.3));
    this.bands = bands + padding * (Math.max(...counts) - 1);
    this.graph = this.layout(this.width - this.left - this.right, this.bands, padding);
    this.thickness = this.graph.links.length ? this.graph.links[0].width / this.graph.links[0].value : 0;
    const lanes = this.returns.reduce((sum, link) => sum + Math.max(1, link.litres * this.thickness) + 10, 0);
    this.height = Math.ceil(this.top * 2 + this.bands + (lanes ? lanes + 8 : 0));
  }

  // Smaller rather than cut, where that helps.
  nameLines(name, room) {
    const at = size => wrapped(name, room, 3, size).map(text => ({ text, size, name: true }));
    for (let size = this.font; size >= kSmallest; size -= 0.5) {
      if (!at(size).some(line => line.text.endsWith("…"))) return at(size);
    }
    return at(this.font);
  }

  amountOf(node) {
    return node.litres ?? node.fixedValue;
  }

  band(link) {
    const x0 = link.source.x1, x1 = link.target.x0, middle = (x0 + x1) / 2;
    return `M${x0},${link.y0}C${middle},${link.y0} ${middle},${link.y1} ${x1},${link.y1}`;
  }

  // Out of the lower end of one node, beneath all others, into the lower end of another.
  returnBands() {
    const byName = new Map(this.graph.nodes.map(node => [node.id, node]));
    let lane = this.bands + this.top + 8;
    const used = new Map();
    return this.returns.map(link => {
      const from = byName.get(link.from), to = byName.get(link.to), width = Math.max(1, link.litres * this.thickness);
      const from_ = used.get(`${from.id} out`) ?? 0, to_ = used.get(`${to.id} in`) ?? 0;
      used.set(`${from.id} out`, from_ + width);
      used.set(`${to.id} in`, to_ + width);
      const y0 = from.y1 - from_ - width / 2, y1 = to.y1 - to_ - width / 2;
      const y = lane + width / 2, r = Math.max(14, width / 2 + 6);
      lane += width + 10;
      return { link, width, path: `M${from.x1},${y0}h2c${r},0 ${r},${y - y0} 0,${y - y0}` +
        `L${to.x0 - 2},${y}c${-r},0 ${-r},${y1 - y} 0,${y1 - y}h2` };
    });
  }

  draw() {
    const { graph } = this;
    const inside = svg("g", { transform: `translate(${this.left},${this.top})` });
    const label = new Map(this.paths.nodes.map(node => [node.id, node]));
    const addBand = (path, width, link) => {
      const from = label.get(link.from);
      const band = svg("path", { d: path, class: "band", stroke: colourOf(from.kind, from.label), "stroke-width": Math.max(1, width) });
      hinted(band, () => [`${isolated(from.label)} → ${isolated(label.get(link.to).label)}`, this.scale.text(link.litres), `in all ${exact(link.litres, "L")}`]);
      inside.append(band);
    };
    for (const link of graph.links) addBand(this.band(link), link.width, link.link);
    for (const { path, width, link } of this.returnBands()) addBand(path, width, link);
    for (const node of graph.nodes) {
      const bar = svg("rect", { x: node.x0, y: node.y0, width: kNode, height: Math.max(1, node.y1 - node.y0),
                                fill: colourOf(node.kind, node.label) });
      hinted(bar, () => [node.label, this.scale.text(this.amountOf(node)), `in all ${exact(this.amountOf(node), "L")}`]);
      inside.append(bar);
    }
    for (const node of graph.nodes) inside.append(this.label(node));
    return svg("svg", { width: this.width, height: this.height, viewBox: `0 0 ${this.width} ${this.height}`, class: "sankey",
                        role: "img", "aria-label": this.said() }, inside);
  }

  label(node) {
    const lines = this.labels.get(node.id), outside = this.beside && node.layer === 0;
    const x = outside ? node.x0 - kGap : node.x1 + kGap;
    const middle = (node.y0 + node.y1) / 2;
    return svg("g", { class: "label", "text-anchor": outside ? "end" : "start" }, svg("title", {}, node.label), ...lines.map((line, i) =>
      svg("text", { x, y: middle + (i - (lines.length - 1) / 2) * kLine + 4, class: line.name ? "name" : "amount",
                    "font-size": line.size }, line.text)));
  }

  said() {
    const parts = kind => this.nodes.filter(node => node.kind === kind).map(node => `${isolated(node.label)} ${this.scale.text(this.amountOf(node))}`);
    return `Flow diagram. From: ${parts("source").join(", ")}. To: ${parts("sink").join(", ")}. The table below holds all bands.`;
  }
}

function linkTable(paths) {
  const label = new Map(paths.nodes.map(node => [node.id, node.label]));
  const scale = scaleOf(paths);
  return table("Bands of the flow diagram", [{ title: "from" }, { title: "to" },
    { title: scale.perYear ? "mean of a year" : "whole period", number: true }, { title: "whole period, exactly", number: true }],
  [...paths.links].sort((a, b) => b.litres - a.litres).map(link =>
    [label.get(link.from), label.get(link.to), scale.text(link.litres), hides(link.litres, "L")]));
}

export function sankeySection({ paths: given, years, period: dates }) {
  if (!given?.links?.some(link => link.litres > 0)) return null;
  const paths = { years, ...given };
  const period = `${isPerYear(paths) ? "Mean of a year" : "Sum of the period"}, ${dates}`;
  const head = { id: "paths", title: "Where the water comes from and goes" };
  if (typeof d3 === "undefined") return { ...head, note: `${period}; nothing is left out.`, body: [linkTable(paths)] };
  const host = make("div", { className: "chart" });
  const frame = scrolled(host, "Flow diagram");
  const body = [figure("Where the water comes from and where it goes.", frame), opened("As a table", () => linkTable(paths))];
  return { ...head, note: `${period}; the width of a band is its volume, and nothing is left out.`, body,
           ready: () => drawn(frame, width => host.replaceChildren(new Picture(paths, width).draw()), { least: 300 })() };
}
