// The network: a drawing or boxes of groups, a search, and what is known of one component.
import { button, byId, figure, make, named, opened, switcher, table } from "./dom.js";
import { address, onAddress, remember } from "./address.js";
import { Drawing, takeDrawing } from "./network_drawing.js";
import { Graph, typesText } from "./network_graph.js";
import { groupPicture, groupsPicture, nearPicture } from "./network_pictures.js";
import { View } from "./network_view.js";
import { componentDetails, nameButton } from "./network_details.js";
import { number } from "./units.js";

const kFound = 20, kInside = 120, kListed = 60, kPrintable = 60, kRows = 300;
const kPaper = { width: 680, height: 760 };

const canLayOut = () => typeof dagre !== "undefined";

class NetworkSection {
  constructor(network) {
    this.graph = new Graph(network);
    this.view = new View("Drawing of the network");
    this.details = make("div", { className: "details", "aria-live": "polite" });
    this.results = make("ul", { className: "found" });
    this.path = make("p", { className: "path", role: "status" });
    this.list = make("div", {});
    const svg = takeDrawing(network);
    this.drawing = svg && new Drawing(svg, this.graph, (index, event) => this.choose(index, event));
    this.hasGroups = canLayOut() && this.graph.boxes().length > 1;
    this.actions = { component: (index, event) => this.choose(index, event), group: group => this.showGroup(group), box: box => this.openBox(box) };
  }

  body() {
    const search = make("input", { type: "search", placeholder: "Search components and groups", "aria-label": "Search components and groups",
      oninput: () => this.find(search.value) });
    this.views = this.drawing && this.hasGroups
      ? switcher("View", [["drawing", "Components"], ["groups", "Groups"]], "drawing", kind => kind === "drawing" ? this.showDrawing() : this.showGroups()) : null;
    const tools = make("div", { className: "finder screen" }, search, this.results, this.details);
    const isLarge = this.drawing && this.hasGroups && this.graph.components.length > kPrintable;
    this.printed = isLarge ? make("div", { className: "paper" }) : null;
    const components = opened("Components as a list", () => this.componentTable());
    const past = button("Skip the drawing", () => components.querySelector("summary").focus(), { className: "skip screen" });
    this.stage = make("div", { className: `stage${isLarge ? " not-paper" : ""}` },
      make("div", { className: "controls screen" }, this.views, this.path, this.view.zoomButtons), past, this.view.node, this.list);
    const key = make("p", { className: "note screen" }, "Solid lines carry water, dashed lines a demand.");
    this.figure = figure("The network: solid lines carry water, dashed lines a demand.", this.stage, this.printed, key);
    return [make("div", { className: "split network" }, tools, this.figure), components];
  }

  ready() {
    if (this.drawing && (this.drawing.fits(this.view.frame.clientWidth) || !this.hasGroups)) this.showDrawing();
    else if (this.hasGroups) this.showGroups();
    else if (canLayOut() && this.graph.components.length) this.showGroup(this.graph.group(0));
    else this.figure.hidden = true;
    if (this.printed) addEventListener("beforeprint", () => {
      this.printed.childNodes.length || this.printed.append(groupsPicture(this.graph, this.actions, kPaper));
    });
    const byAddress = () => {
      if (!address.component) return;
      const index = this.graph.components.findIndex(component => component[0] === address.component);
      if (index >= 0) this.show(index);
    };
    byAddress();
    if (address.component && !address.series) this.view.node.scrollIntoView({ block: "center" });
    onAddress(byAddress);
  }

  // What is shown, after the steps that led there. The keyboard stays where it was, in what replaces it.
  trail(...steps) {
    const wasHere = this.stage.contains(document.activeElement);
    this.path.replaceChildren(...steps.flatMap(([text, go], i) => [i ? " › " : "", go ? button(text, go, { className: "link" }) : named(text)]));
    if (!wasHere) return;
    queueMicrotask(() => document.activeElement !== document.body || (this.list.querySelector("input, button") ?? this.view.frame).focus());
  }

  allGroups() {
    return this.hasGroups ? [["All groups", () => this.showGroups()]] : [];
  }

  picture(drawing) {
    this.list.replaceChildren();
    this.view.node.hidden = false;
    this.view.show(drawing);
  }

  instead(...content) {
    this.view.node.hidden = true;
    this.list.replaceChildren(...content);
  }

  room() {
    return { width: this.view.frame.clientWidth || 800, height: 700 };
  }

  showDrawing() {
    this.trail();
    this.views?.show("drawing");
    this.picture(this.drawing.svg);
  }

  showGroups() {
    this.trail(["All groups"]);
    this.views?.show("groups");
    this.picture(groupsPicture(this.graph, this.actions, this.room()));
  }

  openBox(box) {
    if (box.groups.length === 1) this.showGroup(box.groups[0]);
    else this.listGroups(box);
  }

  listGroups(box) {
    const { graph } = this, items = make("ul", { className: "found" });
    this.trail(...this.allGroups(), [box.name]);
    const show = text => {
      const found = box.groups.filter(group => graph.groupName(group).toLowerCase().includes(text));
      items.replaceChildren(...found.slice(0, kListed).map(group => make("li", {}, button(graph.groupName(group), () => this.showGroup(group)))),
        ...(found.length > kListed ? [make("li", { className: "note", textContent: `… and ${number(found.length - kListed)} more` })] : []));
    };
    const field = make("input", { type: "search", placeholder: "Search these groups", "aria-label": "Search these groups",
      oninput: () => show(field.value.trim().toLowerCase()) });
    show("");
    this.instead(make("p", { className: "note", textContent: `Each holds ${typesText(graph.groups[box.groups[0]].types, 6).join(", ")}.` }), field, items);
  }

  showGroup(group) {
    const { graph } = this, members = graph.members(group);
    this.trail(...this.allGroups(), [graph.groupName(group)]);
    if (members.length <= kInside) return this.picture(groupPicture(graph, group, this.actions, this.room()));
    this.instead(make("p", { className: "note", textContent:
      `${number(members.length)} components are too many for a picture; these are the first ${kListed}, and the search finds all.` }),
    make("ul", { className: "found" }, ...members.slice(0, kListed).map(index => make("li", {}, button(graph.name(index), () => this.choose(index))))));
  }

  showNear(index) {
    const { graph } = this, { found, complete } = graph.near(index);
    const back = this.drawing ? [["All components", () => this.showDrawing()]] : this.allGroups();
    if (graph.group(index) >= 0 && canLayOut()) back.push([graph.groupName(graph.group(index)), () => this.showGroup(graph.group(index))]);
    this.trail(...back, [`${complete ? "around" : "nearest to"} ${graph.name(index)}`]);
    this.picture(nearPicture(graph, index, found, this.actions, this.room()));
  }

  find(text) {
    const { found, more } = this.graph.search(text, kFound, canLayOut());
    this.results.replaceChildren(...found.map(one => {
      const isGroup = one.component === undefined;
      const node = button("", () => {
        if (isGroup) this.showGroup(one.group);
        else this.choose(one.component);
      });
      node.append(named(one.name), make("span", { className: "total", textContent: isGroup ? "group" : this.graph.type(one.component).name }));
      return make("li", {}, node);
    }));
    if (more) this.results.append(make("li", { className: "note", textContent: `… and ${number(more)} more: write more of the name.` }));
    else if (text.trim() && !found.length) this.results.append(make("li", { className: "note", textContent: "Nothing has this in its name." }));
  }

  isDrawingShown() {
    return this.drawing && this.view.drawing === this.drawing.svg;
  }

  // By the reader: the address remembers it, and the keyboard goes on where it is told of.
  choose(index, event) {
    remember({ component: this.graph.name(index) });
    this.show(index);
    if (event?.type === "keydown") this.details.querySelector("button").focus();
  }

  show(index) {
    if (this.isDrawingShown()) this.drawing.mark(index);
    else if (canLayOut()) this.showNear(index);
    this.showDetails(index);
  }

  close(index) {
    this.drawing?.clear();
    this.details.replaceChildren();
    remember({ component: undefined });
    ((this.isDrawingShown() && this.drawing.parts[index]) || this.view.frame).focus({ preventScroll: true });
  }

  showDetails(index) {
    this.details.replaceChildren(...componentDetails(this.graph, index, { choose: other => this.choose(other), close: () => this.close(index),
      near: canLayOut() && this.isDrawingShown() ? () => { this.showNear(index); this.showDetails(index); } : null,
      back: this.drawing && !this.isDrawingShown() ? () => { this.showDrawing(); this.choose(index); } : null }));
  }

  componentTable() {
    const { graph } = this, columns = [{ title: "component" }, { title: "type" }, { title: "group" }, { title: "times", number: true }];
    const rows = graph.components.slice(0, kRows).map(([name, , group, times = 1], index) =>
      [nameButton(name, () => this.choose(index)), graph.type(index).name, named(group < 0 ? "" : graph.groupName(group)), number(times)]);
    const rest = graph.components.length > kRows
      ? [make("p", { className: "note", textContent: `The first ${kRows} of ${number(graph.components.length)}; the search finds all.` })] : [];
    return [table("Components", columns, rows), ...rest];
  }
}

export function networkSection({ network }) {
  if (!network?.components?.length) {
    byId("drawing").remove();
    return null;
  }
  const section = new NetworkSection(network);
  const isSeen = section.drawing || canLayOut();
  return { id: "network", title: "Network", body: section.body(), ready: () => section.ready(),
    note: section.drawing ? "The components, with their ports and groups, and what flows between them."
      : isSeen ? "The groups, with what they hold and what flows between them." : "The components, found by name.",
    how: isSeen ? "Drag to pan; zoom with Ctrl and the wheel, or do both with two fingers. Click a box, or press Enter on it, to open it: a component shows its values, figures and series." : "" };
}
