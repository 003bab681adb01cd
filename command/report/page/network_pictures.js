// The pictures of boxes that the page makes of the network: all groups, one group, a neighbourhood.
import { boxPicture } from "./network_boxes.js";
import { typesText } from "./network_graph.js";
import { amount, number } from "./units.js";

const inAll = (litres, demand) => `${demand ? "demand, " : ""}${amount(litres, "L")} in all`;
const counted = (count, one, more) => `${number(count)} ${count === 1 ? one : more}`;

function linkText(graph, [from, out, to, into, demand, litres]) {
  return [`${graph.name(from)} ${out} → ${graph.name(to)} ${into}`, ...(litres === undefined || litres === null ? [] : [inAll(litres, demand)])];
}

// `actions`: what opens a part: { component(index, event), group(index), box(box) }.
function componentBox(graph, index, actions, more = {}) {
  const type = graph.type(index), times = graph.components[index][3];
  return { id: index, lines: [graph.name(index), times > 1 ? `${type.name}, ${number(times)} times` : type.name], family: type.family,
           open: event => actions.component(index, event), ...more };
}

export function groupsPicture(graph, actions, room) {
  const boxes = graph.boxes(), links = graph.boxLinks();
  const most = Math.max(...links.map(link => link.litres), 1);
  const nodes = boxes.map((box, id) => ({ id, family: "group", open: () => actions.box(box),
    lines: [box.name, counted(box.components, "component", "components"), ...typesText(box.types)], hint: [box.name, ...typesText(box.types, 12)] }));
  const edges = links.map(link => ({ from: link.from, to: link.to, demand: link.demand, label: !link.demand && link.litres ? amount(link.litres, "L") : "",
    width: link.demand ? 1.5 : 1.2 + 3.5 * Math.sqrt(link.litres / most),
    hint: [`${boxes[link.from].name} → ${boxes[link.to].name}`, inAll(link.litres, link.demand), counted(link.count, "link", "links")] }));
  return boxPicture(nodes, edges, { room, said: `Groups and what flows between them: ${boxes.map(box => box.name).slice(0, 12).join(", ")}.` });
}

// A group with what lies around it, one faint box for each other group.
export function groupPicture(graph, group, actions, room) {
  const members = graph.members(group), inside = new Set(members), around = new Map(), edges = new Map();
  const place = index => {
    if (inside.has(index)) return index;
    const other = graph.group(index), id = other < 0 ? index : `g${other}`;
    around.set(id, other < 0 ? { lines: [graph.name(index)], open: event => actions.component(index, event) }
      : { lines: [graph.groupName(other), "group"], open: () => actions.group(other) });
    return id;
  };
  for (const index of members) {
    for (const link of graph.linksOf(index)) {
      const from = place(link[0]), to = place(link[2]), key = `${from} ${to} ${link[4]}`;
      if (!edges.has(key)) edges.set(key, { from, to, demand: Boolean(link[4]), hint: linkText(graph, link) });
    }
  }
  const nodes = [...members.map(index => componentBox(graph, index, actions)), ...[...around].map(([id, one]) => ({ id, faint: true, ...one }))];
  return boxPicture(nodes, [...edges.values()], { room, said: `The group ${graph.groupName(group)} and what lies around it.` });
}

export function nearPicture(graph, index, found, actions, room) {
  const inside = new Set(found);
  const edges = found.flatMap(one => graph.linksOf(one).filter(link => link[0] === one && inside.has(link[2]))
    .map(link => ({ from: link[0], to: link[2], demand: Boolean(link[4]), hint: linkText(graph, link) })));
  const nodes = found.map(one => componentBox(graph, one, actions, one === index ? { family: `${graph.type(one).family} chosen` } : {}));
  return boxPicture(nodes, edges, { room, said: `${graph.name(index)} and what is one or two links away.` });
}
