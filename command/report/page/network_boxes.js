// Pictures of boxes and arrows, placed by dagre: groups and what flows between them, a group, a neighbourhood.
import { pressable, svg } from "./dom.js";
import { hinted, widthOf, wrapped } from "./chart.js";

const kText = 12, kLine = 15, kWidest = 190;

function sized(node) {
  const lines = node.lines.flatMap((line, i) => wrapped(line, kWidest, i ? 1 : 2, i ? kText - 1 : kText).map(text => ({ text, first: i === 0 })));
  const width = Math.max(40, ...lines.map(line => widthOf(line.text, kText) * (line.first ? 1.08 : 1))) + 20;
  return { ...node, texts: lines, width, height: lines.length * kLine + 12 };
}

// Through the middles of dagre's points.
function curve(points) {
  let path = `M${points[0].x},${points[0].y}`;
  for (let i = 1; i < points.length - 1; ++i) {
    const next = points[i + 1], last = i === points.length - 2;
    const x = last ? next.x : (points[i].x + next.x) / 2, y = last ? next.y : (points[i].y + next.y) / 2;
    path += `Q${points[i].x},${points[i].y} ${x},${y}`;
  }
  return points.length === 2 ? `${path}L${points[1].x},${points[1].y}` : path;
}

function arrowHead(demand) {
  return svg("marker", { id: demand ? "to-demand" : "to-water", viewBox: "0 0 10 10", refX: 9, refY: 5, markerWidth: 9, markerHeight: 9,
    markerUnits: "userSpaceOnUse", orient: "auto" }, svg("path", { d: "M0,1L10,5L0,9z", class: demand ? "head demand" : "head" }));
}

// `nodes`: [{ id, lines, family, faint, open, hint }], `edges`: [{ from, to, demand, label, width, hint }].
function laidOut(nodes, edges, down, said) {
  const graph = new dagre.graphlib.Graph({ multigraph: true });
  graph.setGraph({ rankdir: down ? "TB" : "LR", nodesep: 16, ranksep: 46, edgesep: 12, marginx: 12, marginy: 12 });
  graph.setDefaultEdgeLabel(() => ({}));
  for (const node of nodes) graph.setNode(String(node.id), sized(node));
  edges.forEach((edge, i) => graph.setEdge(String(edge.from), String(edge.to), {
    ...edge, width: edge.label ? widthOf(edge.label, 11) + 8 : 0, height: edge.label ? 14 : 0, labelpos: "c", stroke: edge.width }, String(i)));
  dagre.layout(graph);
  const { width, height } = graph.graph();
  const drawing = svg("svg", { viewBox: `0 0 ${Math.ceil(width)} ${Math.ceil(height)}`, class: "boxes", role: "group", "aria-label": said },
    svg("defs", {}, arrowHead(false), arrowHead(true)));
  const labels = svg("g", { class: "amounts" });  // above all lines
  for (const id of graph.edges()) {
    const edge = graph.edge(id);
    const line = svg("g", { class: edge.demand ? "edge demand" : "edge" },
      svg("path", { d: curve(edge.points), "stroke-width": edge.stroke ?? 1.5, "marker-end": `url(#${edge.demand ? "to-demand" : "to-water"})` }));
    if (edge.label) labels.append(svg("rect", { x: edge.x - edge.width / 2 + 2, y: edge.y - 7, width: edge.width - 4, height: 14, rx: 3 }),
      svg("text", { x: edge.x, y: edge.y + 4, "text-anchor": "middle", "font-size": 11 }, edge.label));
    if (edge.hint) hinted(line, () => edge.hint);
    drawing.append(line);
  }
  drawing.append(labels);
  for (const id of graph.nodes()) {
    const node = graph.node(id);
    const left = node.x - node.width / 2, top = node.y - node.height / 2;
    const box = svg("g", { class: `box ${node.family ?? ""} ${node.faint ? "faint" : ""} ${node.open ? "clickable" : ""}`, "data-id": id },
      svg("rect", { x: left, y: top, width: node.width, height: node.height, rx: 6 }),
      ...node.texts.flatMap((line, i) => [svg("text", { x: node.x, y: top + 6 + (i + 1) * kLine - 4, "text-anchor": "middle",
        "font-size": line.first ? kText : kText - 1, class: line.first ? "name" : "aside" }, line.text), "\n"]));  // words apart when read aloud
    if (node.hint) hinted(box, () => node.hint);
    if (node.open) pressable(box, node.open);
    drawing.append(box);
  }
  drawing.full = { x: 0, y: 0, width: Math.ceil(width), height: Math.ceil(height) };
  return drawing;
}

// Down or to the right, whichever can be larger in the room there is.
export function boxPicture(nodes, edges, { room, said }) {
  const scale = drawing => Math.min(room.width / drawing.full.width, room.height / drawing.full.height);
  const [right, down] = [false, true].map(way => laidOut(nodes, edges, way, said));
  return scale(down) > scale(right) * 1.1 ? down : right;
}
