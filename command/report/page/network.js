// The network: a drawing or boxes of groups, a search, and what is known of one component.
import { button, byId, figure, make, named, opened, switcher, table } from "./dom.js";
import { address, onAddress, remember } from "./address.js";
import { Graph, typesText } from "./network_graph.js";
import { boxPicture } from "./network_boxes.js";
import { View } from "./network_view.js";
import { componentDetails, nameButton } from "./network_details.js";
import { amount, number } from "./units.js";

const kFound = 20, kInside = 120, kListed = 60, kPrintable = 60;
const kPaper = { width: 680, height: 760 };
const kReadable = 0.4;  // of its size, to which a drawing may shrink and still be read

const canLayOut = () => typeof dagre !== "undefined";

class NetworkSection {
  constructor(network) {
    this.graph = new Graph(network);
    this.view = new View("Drawing of the network");
    this.details = make("div", { className: "details", "aria-live": "polite" });
    this.results = make("ul", { className: "found" });
    this.path = make("p", { className: "path", role: "status" });
    this.list = make("div", {});
    const host = byId("drawing"), svg = host.querySelector("svg");
    this.drawing = network.drawing !== false && svg ? svg : null;
    if (this.drawing) this.prepare();
    host.remove();
  }

  // The drawing of Graphviz: its size, and which of its parts is which component.
  prepare() {
    const box = this.drawing.viewBox.baseVal;
    this.drawing.full = { x: box.x, y: box.y, width: box.width, height: box.height };
    this.drawing.classList.add("graphviz");
    this.drawing.setAttribute("role", "img");
    this.drawing.setAttribute("aria-label", `Drawing of ${this.graph.components.length} components; the search beside it finds each.`);
    for (const title of this.drawing.querySelectorAll("title")) title.remove();
    for (const link of this.drawing.querySelectorAll("a")) link.removeAttribute("xlink:title");
    this.parts = this.graph.components.map((_, index) => this.drawing.querySelector(`[id="n${index}"]`));
    this.parts.forEach((part, index) => part?.addEventListener("click", () => this.view.moved || this.choose(index)));
  }

  body() {
    const { graph } = this;
    const search = make("input", { type: "search", placeholder: "Search components and groups", "aria-label": "Search components and groups",
      oninput: () => this.find(search.value) });
    const views = this.drawing && canLayOut() && graph.boxes().length > 1
      ? switcher("View", [["drawing", "Components"], ["groups", "Groups"]], "drawing", kind => kind === "drawing" ? this.showDrawing() : this.showGroups()) : null;
    this.views = views;
    const tools = make("div", { className: "finder screen" }, search, this.results, this.details);
    const large = this.drawing && graph.components.length > kPrintable && canLayOut() && graph.boxes().length > 1;
    this.printed = large ? make("div", { className: "paper boxes-paper" }) : null;
    const stage = make("div", { className: `stage${large ? " not-paper" : ""}` }, make("div", { className: "controls screen" }, views, this.path, this.view.zoomButtons), this.view.node, this.list);
    const key = make("p", { className: "note screen" }, "Solid lines carry water, dashed lines a demand.");
    return [make("div", { className: "split network" }, tools, figure("The network: solid lines carry water, dashed lines a demand.", stage, this.printed, key)),
            opened("Components as a list", () => this.componentTable())];
  }

  ready() {
    const groups = canLayOut() && this.graph.boxes().length > 1;
    const fits = this.drawing && this.view.frame.clientWidth > kReadable * this.drawing.full.width && 900 > kReadable * this.drawing.full.height;
    if (this.drawing && (fits || !groups)) this.showDrawing();
    else if (groups) this.showGroups();
    else if (canLayOut() && this.graph.components.length) this.showGroup(this.graph.group(0));
    else this.view.node.hidden = true;
    if (this.printed) addEventListener("beforeprint", () => {
      this.printed.childNodes.length || this.printed.append(this.groupPicture(kPaper));
    });
    const byAddress = () => {
      if (!address.component) return;
      const index = this.graph.components.findIndex(component => component[0] === address.component);
      if (index >= 0) this.choose(index, false);
    };
    byAddress();
    if (address.component && !address.series) this.view.node.scrollIntoView({ block: "center" });
    onAddress(byAddress);
  }

  trail(...steps) {
    this.path.replaceChildren(...steps.flatMap(([text, go], i) => [i ? " › " : "", go ? button(text, go, { className: "link" }) : named(text)]));
  }

  showDrawing() {
    this.trail();
    this.list.replaceChildren();
    this.views?.show("drawing");
    this.view.show(this.drawing);
  }

  room() {
    return { width: this.view.frame.clientWidth || 800, height: 700 };
  }

  groupPicture(room) {
    const { graph } = this, boxes = graph.boxes(), links = graph.boxLinks();
    const most = Math.max(...links.map(link => link.litres), 1);
    return boxPicture(boxes.map((box, id) => ({ id, family: "group", onclick: () => this.view.moved || this.openBox(box),
      lines: [box.name, `${number(box.components)} ${box.components === 1 ? "component" : "components"}`, ...typesText(box.types)],
      hint: [box.name, ...typesText(box.types, 12)] })),
    links.map(link => ({ from: link.from, to: link.to, demand: link.demand, label: !link.demand && link.litres ? amount(link.litres, "L") : "",
      width: link.demand ? 1.5 : 1.2 + 3.5 * Math.sqrt(link.litres / most),
      hint: [`${boxes[link.from].name} → ${boxes[link.to].name}`, `${link.demand ? "demand, " : ""}${amount(link.litres, "L")} in all`,
             `${number(link.count)} ${link.count === 1 ? "link" : "links"}`] })),
    { room, said: `Groups and what flows between them: ${boxes.map(box => box.name).slice(0, 12).join(", ")}.` });
  }

  showGroups() {
    this.views?.show("groups");
    this.trail(["All groups"]);
    this.list.replaceChildren();
    this.view.node.hidden = false;
    this.view.show(this.groupPicture(this.room()));
  }

  openBox(box) {
    if (box.groups.length === 1) this.showGroup(box.groups[0]);
    else this.listGroups(box);
  }

  listGroups(box) {
    this.trail(["All groups", () => this.showGroups()], [box.name]);
    const items = make("ul", { className: "found" });
    const show = text => {
      const found = box.groups.filter(group => this.graph.groupName(group).toLowerCase().includes(text));
      items.replaceChildren(...found.slice(0, kListed).map(group => make("li", {}, button(this.graph.groupName(group), () => this.showGroup(group)))),
        ...(found.length > kListed ? [make("li", { className: "note", textContent: `… and ${number(found.length - kListed)} more` })] : []));
    };
    const field = make("input", { type: "search", placeholder: "Search these groups", "aria-label": "Search these groups",
      oninput: () => show(field.value.trim().toLowerCase()) });
    show("");
    this.view.node.hidden = true;
    this.list.replaceChildren(make("p", { className: "note", textContent: `Each holds ${typesText(this.graph.groups[box.groups[0]].types, 6).join(", ")}.` }), field, items);
  }

  // A group with what lies around it, one faint box for each other group.
  showGroup(group) {
    const { graph } = this, members = graph.members(group);
    const back = graph.boxes().length > 1 ? [["All groups", () => this.showGroups()]] : [];
    this.trail(...back, [graph.groupName(group)]);
    if (members.length > kInside) {
      this.view.node.hidden = true;
      this.list.replaceChildren(make("p", { className: "note", textContent:
        `${number(members.length)} components are too many for a picture; these are the first ${kListed}, and the search finds all.` }),
      make("ul", { className: "found" }, ...members.slice(0, kListed).map(index => make("li", {}, button(graph.name(index), () => this.choose(index))))));
      return;
    }
    const inside = new Set(members), edges = [], around = new Map();
    const place = index => {
      if (inside.has(index)) return index;
      const other = graph.group(index), id = other < 0 ? index : `g${other}`;
      around.set(id, other < 0 ? { lines: [graph.name(index)], onclick: () => this.choose(index) }
        : { lines: [graph.groupName(other), "group"], onclick: () => this.showGroup(other) });
      return id;
    };
    const seen = new Map();
    for (const index of members) {
      for (const link of graph.linksOf(index)) {
        if (link[0] !== index && inside.has(link[0])) continue;  // taken with the other end
        const from = place(link[0]), to = place(link[2]), key = `${from} ${to} ${link[4]}`;
        if (seen.has(key)) continue;
        seen.set(key, true);
        edges.push({ from, to, demand: Boolean(link[4]), hint: this.linkText(link) });
      }
    }
    const nodes = [...members.map(index => this.componentBox(index)), ...[...around].map(([id, one]) => ({ id, faint: true, ...one }))];
    this.picture(nodes, edges, `The group ${graph.groupName(group)} and what lies around it.`);
  }

  componentBox(index, more = {}) {
    const { graph } = this, type = graph.type(index), times = graph.components[index][3];
    return { id: index, lines: [graph.name(index), times > 1 ? `${type.name}, ${number(times)} times` : type.name], family: type.family,
             onclick: () => this.view.moved || this.choose(index), ...more };
  }

  linkText([from, out, to, into, demand, litres]) {
    const { graph } = this;
    return [`${graph.name(from)} ${out} → ${graph.name(to)} ${into}`, ...(litres === undefined || litres === null ? [] : [`${demand ? "demand, " : ""}${amount(litres, "L")} in all`])];
  }

  picture(nodes, edges, said) {
    this.list.replaceChildren();
    this.view.node.hidden = false;
    this.view.show(boxPicture(nodes, edges, { room: this.room(), said }));
  }

  showNear(index) {
    const { graph } = this, { found, complete } = graph.near(index), inside = new Set(found), edges = [];
    const back = this.drawing ? [["All components", () => this.showDrawing()]] : graph.boxes().length > 1 ? [["All groups", () => this.showGroups()]] : [];
    if (graph.group(index) >= 0 && canLayOut()) back.push([graph.groupName(graph.group(index)), () => this.showGroup(graph.group(index))]);
    this.trail(...back, [`${complete ? "around" : "nearest to"} ${graph.name(index)}`]);
    for (const one of found) {
      for (const link of graph.linksOf(one)) {
        if (link[0] === one && inside.has(link[2])) edges.push({ from: link[0], to: link[2], demand: Boolean(link[4]), hint: this.linkText(link) });
      }
    }
    this.picture(found.map(one => this.componentBox(one, one === index ? { family: `${graph.type(one).family} chosen` } : {})), edges,
      `${graph.name(index)} and what is one or two links away.`);
  }

  find(text) {
    const { found, more } = this.graph.search(text, kFound);
    this.results.replaceChildren(...found.map(one => make("li", {}, button("", () => {
      if (one.component !== undefined) this.choose(one.component);
      else if (canLayOut()) this.showGroup(one.group);
    }, {}), null)));
    [...this.results.querySelectorAll("button")].forEach((node, i) => node.append(named(found[i].name),
      make("span", { className: "total", textContent: found[i].component === undefined ? "group" : this.graph.type(found[i].component).name })));
    if (more) this.results.append(make("li", { className: "note", textContent: `… and ${number(more)} more: write more of the name.` }));
    else if (text.trim() && !found.length) this.results.append(make("li", { className: "note", textContent: "Nothing has this in its name." }));
  }

  choose(index, byReader = true) {
    if (byReader) remember({ component: this.graph.name(index) });
    if (this.drawing && this.view.drawing === this.drawing) this.mark(index);
    else if (canLayOut()) this.showNear(index);
    this.showDetails(index);
  }

  // In the drawing: what it is linked with stays, the rest fades.
  mark(index) {
    const near = new Set([index]);
    for (const [from, , to] of this.graph.linksOf(index)) near.add(from).add(to);
    this.drawing.classList.add("marked");
    this.parts.forEach((part, at) => {
      part?.classList.toggle("chosen", at === index);
      part?.classList.toggle("near", near.has(at));
    });
    this.graph.links.forEach((link, at) => this.drawing.querySelector(`[id="e${at}"]`)?.classList.toggle("near", link[0] === index || link[2] === index));
  }

  clear() {
    this.drawing?.classList.remove("marked");
    this.details.replaceChildren();
    remember({ component: undefined });
  }

  showDetails(index) {
    this.details.replaceChildren(...componentDetails(this.graph, index, { choose: other => this.choose(other), close: () => this.clear(),
      near: canLayOut() && this.view.drawing === this.drawing ? () => { this.showNear(index); this.showDetails(index); } : null,
      back: this.drawing && this.view.drawing !== this.drawing ? () => { this.showDrawing(); this.choose(index); } : null }));
  }

  componentTable() {
    const { graph } = this, kRows = 300;
    return [table("Components", [{ title: "component" }, { title: "type" }, { title: "group" }, { title: "times", number: true }],
      graph.components.slice(0, kRows).map((component, index) => [nameButton(component[0], () => this.choose(index)), graph.type(index).name, named(component[2] < 0 ? "" : graph.groupName(component[2])),
        number(component[3] ?? 1)])), ...(graph.components.length > kRows ? [make("p", { className: "note", textContent: `The first ${kRows} of ${number(graph.components.length)}; the search finds all.` })] : [])];
  }
}

export function networkSection({ network }) {
  if (!network?.components?.length) {
    byId("drawing").remove();
    return null;
  }
  const section = new NetworkSection(network);
  return { id: "network", title: "Network", body: section.body(), ready: () => section.ready(),
    note: section.drawing ? "The components, with their ports and groups, and what flows between them." : "The groups, with what they hold and what flows between them.",
    how: "Drag to pan; Ctrl and the wheel zoom. Click a box to open it, a component for its values, figures and series." };
}
