// The network as data: who is in which group, who sends to whom, groups that are alike.
import { number } from "./units.js";

const kMostBoxes = 40;
const kNear = 60;  // components in one picture of a neighbourhood

export class Graph {
  constructor(network) {
    Object.assign(this, { components: [], groups: [], types: [], group_links: [], details: {} }, network);
    this.links = network.links ?? this.unpackedLinks(network.packed_links);
  }

  // Three integers each: from, to, and the ports with what they carry.
  unpackedLinks(base64) {
    if (!base64) return [];
    const bytes = Uint8Array.from(atob(base64), c => c.charCodeAt(0)), view = new DataView(bytes.buffer);
    const at = i => view.getInt32(4 * i, true);
    const port = (index, side, number) => this.type(index)[side]?.[number - 1] ?? "";
    return Array.from({ length: bytes.length / 12 }, (_, i) => {
      const from = at(3 * i), to = at(3 * i + 1), how = at(3 * i + 2);
      return [from, port(from, "out", how & 3), to, port(to, "in", (how >> 2) & 3), (how >> 4) & 1];
    });
  }

  name(index) { return this.components[index][0]; }
  type(index) { return this.types[this.components[index][1]] ?? { name: "", family: "" }; }
  group(index) { return this.components[index][2]; }
  groupName(group) { return group < 0 ? "without a group" : this.groups[group].label || this.groups[group].name; }

  // Links of a component, in the order of the model.
  linksOf(index) {
    this.byComponent ??= (() => {
      const lists = this.components.map(() => []);
      this.links.forEach(link => {
        lists[link[0]]?.push(link);
        if (link[2] !== link[0]) lists[link[2]]?.push(link);
      });
      return lists;
    })();
    return this.byComponent[index];
  }

  members(group) {
    this.byGroup ??= (() => {
      const lists = new Map();
      this.components.forEach((component, index) => {
        const list = lists.get(component[2]);
        if (list) list.push(index);
        else lists.set(component[2], [index]);
      });
      return lists;
    })();
    return this.byGroup.get(group) ?? [];
  }

  // What is one or two links away, as long as it can be seen.
  near(index) {
    const found = new Set([index]);
    let edge = [index];
    for (let step = 0; step < 2 && edge.length; ++step) {
      const next = [];
      for (const one of edge) {
        for (const [from, , to] of this.linksOf(one)) {
          const other = from === one ? to : from;
          if (found.has(other)) continue;
          if (found.size + next.length >= kNear) return { found: step ? [...found] : [...found, ...next], complete: false };
          next.push(other);
        }
      }
      for (const one of new Set(next)) found.add(one);
      edge = [...new Set(next)];
    }
    return { found: [...found], complete: true };
  }

  search(text, most, withGroups) {
    const wanted = text.trim().toLowerCase();
    if (!wanted) return { found: [], more: 0 };
    const found = [];
    let more = 0;
    const take = (name, entry) => {
      if (!name.toLowerCase().includes(wanted)) return;
      if (found.length < most) found.push(entry);
      else ++more;
    };
    if (withGroups) this.groups.forEach((group, index) => take(group.name, { group: index, name: group.label || group.name }));
    this.components.forEach((component, index) => take(component[0], { component: index, name: component[0] }));
    return { found, more };
  }

  // Boxes of groups: one each, or, where these are too many, one for all that hold the same types.
  boxes() {
    if (this.allBoxes) return this.allBoxes;
    const single = this.groups.map((group, index) => ({ groups: [index], components: group.components, types: group.types, name: this.groupName(index) }))
      .filter(box => box.components > 0);
    const loose = this.members(-1).length;
    let boxes = single.length <= kMostBoxes ? single : this.merged(single);
    if (loose) boxes = [...boxes, { groups: [-1], components: loose, types: this.counted(this.members(-1)), name: "Without a group" }];
    return this.allBoxes = boxes;
  }

  counted(members) {
    const types = {};
    for (const index of members) {
      const { name } = this.type(index);
      types[name] = (types[name] ?? 0) + 1;
    }
    return types;
  }

  merged(single) {
    const alike = new Map();
    for (const box of single) {
      const key = JSON.stringify(Object.entries(box.types).sort());
      const other = alike.get(key);
      if (other) {
        other.groups.push(...box.groups);
        other.components += box.components;
        for (const [type, count] of Object.entries(box.types)) other.types[type] += count;
      } else {
        alike.set(key, { ...box, groups: [...box.groups], types: { ...box.types } });
      }
    }
    const sorted = [...alike.values()].sort((a, b) => b.components - a.components);
    const kept = sorted.slice(0, kMostBoxes - 1), rest = sorted.slice(kMostBoxes - 1);
    if (rest.length) {
      const types = {};
      for (const box of rest) for (const [type, count] of Object.entries(box.types)) types[type] = (types[type] ?? 0) + count;
      kept.push({ groups: rest.flatMap(box => box.groups), components: rest.reduce((sum, box) => sum + box.components, 0), types, name: "Other groups" });
    }
    for (const box of kept) {
      if (box.groups.length > 1 && box.name !== "Other groups") box.name = `${number(box.groups.length)} groups like ${box.name}`;
    }
    return kept;
  }

  // Sums of what goes from box to box: [{ from, to, demand, litres, count }].
  boxLinks() {
    const at = new Map();
    this.boxes().forEach((box, i) => box.groups.forEach(group => at.set(group, i)));
    const sums = new Map();
    for (const [from, to, demand, litres, count] of this.group_links) {
      const a = at.get(from), b = at.get(to);
      if (a === undefined || b === undefined || a === b) continue;
      const key = `${a} ${b} ${demand}`, sum = sums.get(key) ?? { from: a, to: b, demand: Boolean(demand), litres: 0, count: 0 };
      sum.litres += litres ?? 0;
      sum.count += count ?? 1;
      sums.set(key, sum);
    }
    return [...sums.values()].sort((a, b) => b.litres - a.litres).slice(0, 200);
  }
}

export function typesText(types, most = 3) {
  const sorted = Object.entries(types).sort((a, b) => b[1] - a[1]);
  const shown = sorted.slice(0, most).map(([type, count]) => `${number(count)} × ${type}`);
  return sorted.length > most ? [...shown, sorted.length - most === 1 ? "1 more type" : `${sorted.length - most} more types`] : shown;
}
