// Elements without markup: what stands in the data is text, and never becomes HTML.
const kSvg = "http://www.w3.org/2000/svg";

export const byId = id => document.getElementById(id);

function assigned(node, properties) {
  for (const [name, value] of Object.entries(properties)) {
    if (value === undefined || value === null || value === false) continue;
    if (name in node && !name.includes("-") && name !== "role") node[name] = value;
    else node.setAttribute(name, value === true ? "" : value);
  }
  return node;
}

export function make(tag, properties = {}, ...children) {
  const node = assigned(document.createElement(tag), properties);
  node.append(...children.filter(child => child !== null && child !== undefined));
  return node;
}

export function svg(tag, attributes = {}, ...children) {
  const node = document.createElementNS(kSvg, tag);
  for (const [name, value] of Object.entries(attributes)) {
    if (value !== undefined && value !== null) node.setAttribute(name, value);
  }
  node.append(...children.filter(child => child !== null && child !== undefined));
  return node;
}

// A name of the model: it may be in any script, and must not turn round what follows.
// A long one breaks where its parts meet, though not between a file and its line.
export function named(text) {
  const parts = String(text).split(/(?<=[:_/.])(?=[^\s:_/.\d])/);
  return make("bdi", {}, ...parts.flatMap((part, i) => i ? [make("wbr"), part] : [part]));
}

// The same within a text that has no elements.
export const isolated = text => `\u2068${text}\u2069`;

// A list that is opened with a click, and filled only then.
export function opened(title, fill) {
  const details = make("details", {}, make("summary", { textContent: title }));
  const body = make("div", { className: "opened" });
  details.append(body);
  details.addEventListener("toggle", () => {
    if (details.open && !body.childNodes.length) body.append(...[fill()].flat());
  });
  return details;
}

// A picture and what it shows. The caption is printed; on the screen the heading and its sentence say the same.
export function figure(caption, ...children) {
  return make("figure", {}, ...children.filter(child => child), make("figcaption", { textContent: caption }));
}

export function button(text, onclick, properties = {}) {
  return make("button", { type: "button", textContent: text, onclick, ...properties });
}

// A part of a picture that opens something: with the pointer, or with Enter and the space bar. Its name is what is written on it.
export function pressable(node, open) {
  node.setAttribute("role", "button");
  node.setAttribute("tabindex", "0");
  node.addEventListener("click", open);
  node.addEventListener("keydown", event => {
    if (event.target !== node || !["Enter", " "].includes(event.key)) return;
    event.preventDefault();
    open(event);
  });
  return node;
}

export function choice(label, options, value, onchange) {
  const select = make("select", {}, ...options.map(([key, text]) => make("option", { value: key, textContent: text })));
  select.value = value;
  select.onchange = () => onchange(select.value);
  return make("label", { className: "choice" }, make("span", { textContent: label }), select);
}

// One of a few: buttons of which one is pressed.
export function switcher(label, options, value, onchange) {
  const group = make("div", { className: "switcher", role: "group", "aria-label": label });
  const show = chosen => {
    for (const one of group.children) one.setAttribute("aria-pressed", String(one.value === chosen));
  };
  group.append(...options.map(([key, text]) => button(text, () => {
    show(key);
    onchange(key);
  }, { value: key })));
  show(value);
  group.show = show;
  return group;
}

// A table that scrolls within itself where it is too wide. `columns`: [{ title, number, unit }]; cells are text, numbers or nodes.
export function table(caption, columns, rows) {
  const cell = (tag, content, column, more) => {
    const node = make(tag, { className: column.number ? "number" : "", ...more });
    node.append(content ?? "");
    return node;
  };
  // A short one is not divided between sheets of paper.
  const made = make("table", { className: rows.length <= 15 ? "short" : "" },
    make("caption", { className: "hidden", textContent: caption }),
    make("thead", {}, make("tr", {}, ...columns.map(column => cell("th", column.title, column, { scope: "col" })))),
    make("tbody", {}, ...rows.map(row => make("tr", { className: row.className ?? "" }, ...row.map((content, i) =>
      i === 0 ? cell("th", content, columns[i], { scope: "row" }) : cell("td", content, columns[i]))))));
  return scrolled(made, caption);
}

// What may be wider than the page: reached by keyboard only where it scrolls.
export function scrolled(node, label) {
  const host = make("div", { className: "scrolled" }, node);
  const look = () => {
    if (host.scrollWidth > host.clientWidth + 1) {
      assigned(host, { tabIndex: 0, role: "region", "aria-label": `${label}, wider than its place` });
    } else {
      for (const name of ["tabindex", "role", "aria-label"]) host.removeAttribute(name);
    }
  };
  new ResizeObserver(look).observe(host);
  new ResizeObserver(look).observe(node);
  return host;
}
