// The drawing that Graphviz has made of the network: its parts are the components, in the order of the model.
import { byId, pressable } from "./dom.js";

const kReadable = 0.4;  // of its size, to which a drawing may shrink and still be read
const kTallest = 900;

// Takes the drawing out of the page; null: there is none.
export function takeDrawing({ drawing }) {
  const host = byId("drawing"), svg = host.querySelector("svg");
  host.remove();
  return drawing !== false ? svg : null;
}

export class Drawing {
  constructor(svg, graph, choose) {
    this.svg = svg;
    this.graph = graph;
    const box = svg.viewBox.baseVal;
    svg.full = { x: box.x, y: box.y, width: box.width, height: box.height };
    svg.classList.add("graphviz");
    svg.setAttribute("role", "group");
    svg.setAttribute("aria-label", `Drawing of ${graph.components.length} components`);
    for (const title of svg.querySelectorAll("title")) title.remove();
    // Read aloud are names and types, not the ports beside them.
    for (const port of svg.querySelectorAll(".node text:not([font-weight], [fill])")) port.setAttribute("aria-hidden", "true");
    for (const link of svg.querySelectorAll("a")) link.removeAttribute("xlink:title");
    this.parts = graph.components.map((_, index) => svg.querySelector(`[id="n${index}"]`));
    this.parts.forEach((part, index) => part && pressable(part, event => choose(index, event)));
  }

  fits(width) {
    const { full } = this.svg;
    return width > kReadable * full.width && kTallest > kReadable * full.height;
  }

  // What it is linked with stays, the rest fades.
  mark(index) {
    const near = new Set([index]);
    for (const [from, , to] of this.graph.linksOf(index)) near.add(from).add(to);
    this.svg.classList.add("marked");
    this.parts.forEach((part, at) => {
      part?.classList.toggle("chosen", at === index);
      part?.classList.toggle("near", near.has(at));
    });
    this.graph.links.forEach((link, at) => this.svg.querySelector(`[id="e${at}"]`)?.classList.toggle("near", link[0] === index || link[2] === index));
  }

  clear() {
    this.svg.classList.remove("marked");
    for (const part of this.parts) part?.classList.remove("chosen", "near");
  }
}
