// What is known of one component: its figures and values, its series, and what it is linked with.
import { button, make, named } from "./dom.js";
import { canDraw } from "./lines.js";
import { all, kMostShown } from "./series_data.js";
import { showSeries } from "./series.js";
import { amount, hides, number } from "./units.js";

const kLinks = 20;

export function nameButton(name, onclick) {
  const node = button("", onclick, { className: "link" });
  node.append(named(name));
  return node;
}

function pairs(title, rows) {
  if (!rows.length) return [];
  return [make("h4", { textContent: title }), make("dl", { className: "pairs" }, ...rows.flatMap(([key, content, exact]) =>
    [make("dt", { textContent: key.replaceAll("_", " ") }), make("dd", { title: exact }, content)]))];
}

// `own` and `other` are places in a link: of this component's port, and of the other component and its port.
function ends(title, links, graph, own, other, otherPort, choose) {
  if (!links.length) return [];
  const rows = links.slice(0, kLinks).map(link => {
    const away = [nameButton(graph.name(link[other]), () => choose(link[other])), make("span", { className: "port", textContent: link[otherPort] && `:${link[otherPort]}` })];
    const here = make("span", { className: "port", textContent: link[own] });
    const carried = [link[4] ? "demand" : "water", link[5] ? amount(link[5], "L") : ""].filter(text => text).join(", ");
    return make("li", {}, ...(own > 1 ? [...away, " → ", here] : [here, " → ", ...away]),
      make("span", { className: "total", textContent: carried, title: link[5] ? hides(link[5], "L") : undefined }));
  });
  const more = links.length - rows.length;
  return [make("h4", { textContent: title }), make("ul", { className: "links" }, ...rows,
    more ? make("li", { className: "note", textContent: `… and ${number(more)} more` }) : null)];
}

// `actions`: what the buttons do; those that are null have none.
export function componentDetails(graph, index, { choose, close, near, back }) {
  const [name, , group, times] = graph.components[index], known = graph.details[index] ?? {};
  const about = [graph.type(index).name, group >= 0 ? `in the group ${graph.groupName(group)}` : "", times > 1 ? `counts ${number(times)} times` : ""];
  const links = graph.linksOf(index), own = all.filter(one => one.of === index);
  const shown = own.length === 1 ? "Show its series" : `Show its ${Math.min(kMostShown, own.length)} series`;
  return [
    make("div", { className: "bar" }, make("h3", {}, named(name)), button("Close", close)),
    make("p", { className: "note", textContent: about.filter(text => text).join(", ") }),
    make("div", { className: "controls" }, own.length && canDraw() ? button(shown, () => showSeries(own)) : null,
      near ? button("Neighbourhood", near) : null, back ? button("Back to the drawing", back) : null),
    ...pairs("Figures", (known.figures ?? []).map(([key, value, unit]) => [key, amount(value, unit), hides(value, unit)])),
    ...pairs("Values", (known.values ?? []).map(([key, text]) => [key, named(String(text))])),
    ...ends("Gets from", links.filter(link => link[2] === index), graph, 3, 0, 1, choose),
    ...ends("Sends to", links.filter(link => link[0] === index), graph, 1, 2, 3, choose),
  ];
}
