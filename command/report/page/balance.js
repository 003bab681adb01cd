// The account of the network, the figures, the potentials, and how the page came about.
import { byId, make, named, opened, table } from "./dom.js";
import { amount, hides, largestOf, number, unitFor, digitsFor } from "./units.js";

const kRows = 200;

const words = text => text.replaceAll("_", " ");

const told = (value, unit, chosen) => value === null || value === undefined ? "–" : make("span", { title: hides(value, unit),
  textContent: chosen ? inUnit(value / chosen.factor) : amount(value, unit) });

// In a column of one unit, what is next to nothing is no row of zeros.
function inUnit(value) {
  return value !== 0 && Math.abs(value) < 0.005 ? `${value < 0 ? "> −" : "< "}0.01` : number(value, value === 0 ? 0 : Math.min(2, digitsFor(Math.abs(value))));
}

// The same kind of several components in one line; a click shows which.
function kinds(rows) {
  const sums = new Map();
  for (const row of rows) {
    const one = sums.get(row.kind) ?? { kind: row.kind, litres: 0, components: 0, name: null };
    one.litres += row.litres ?? 0;
    one.components += row.components ?? 1;
    one.name = row.component;
    sums.set(row.kind, one);
  }
  return [...sums.values()].sort((a, b) => (a.kind === "rounding") - (b.kind === "rounding") || b.litres - a.litres);
}

const componentCell = (count, name) => count ? `${number(count)} components` : named(name ?? "");

function side(title, rows) {
  const sums = kinds(rows);
  const total = sums.reduce((sum, one) => sum + one.litres, 0);
  const chosen = unitFor("L", Math.max(largestOf(sums.map(one => one.litres)), Math.abs(total)));
  const lines = sums.map(one => [words(one.kind), componentCell(one.components > 1 ? one.components : 0, one.name), told(one.litres, "L", chosen)]);
  const last = ["total", "", told(total, "L", chosen)];
  last.className = "sum";
  return make("div", {}, make("h3", { textContent: `${title} [${chosen.unit}]` }),
    table(title, [{ title: "kind" }, { title: "component" }, { title: chosen.unit, number: true }], [...lines, last]));
}

function capped(rows, what) {
  return rows.length > kRows ? [make("p", { className: "note", textContent: `The first ${kRows} of ${rows.length} ${what}; all are in the results.` })] : [];
}

function accountRows(account) {
  const sorted = [...account].sort((a, b) => (b.litres ?? Infinity) - (a.litres ?? Infinity)).slice(0, kRows);
  const columns = [{ title: "side" }, { title: "kind" }, { title: "component" }, { title: "amount", number: true }, { title: "remark" }];
  return [table("Account by component", columns, sorted.map(row =>
    [row.side, words(row.kind), componentCell(row.components, row.component), told(row.litres, "L"), row.reason ?? ""])), ...capped(account, "rows")];
}

// Columns that are 0 in all rows are left out.
function balanceRows(balance) {
  const all = ["in", "rain", "drawn", "released", "taken_for_delivered", "created", "out", "evaporated", "infiltrated", "lost", "destroyed",
               "storage_change", "error"];
  const columns = all.filter(name => balance.some(row => row[name]));
  const state = row => row.not_balanced ? `not balanced: ${row.not_balanced}` : row.balanced ? "balanced" : "DOES NOT BALANCE";
  return [table("Balance of the network, of groups and components", [{ title: "level" }, { title: "name" },
    ...columns.map(name => ({ title: words(name), number: true })), { title: "state" }], balance.slice(0, kRows).map(row =>
    [row.level, named(row.name), ...columns.map(name => row.not_balanced ? "" : told(row[name], row.unit ?? "L")), state(row)])), ...capped(balance, "rows")];
}

function figureRows(figures, more) {
  const host = make("div", {});
  const show = text => {
    const wanted = text.trim().toLowerCase();
    const found = figures.filter(row => row.name.toLowerCase().includes(wanted));
    host.replaceChildren(table("Figures", [{ title: "figure" }, { title: "value", number: true }, { title: "from" }, { title: "to" }],
      found.slice(0, kRows).map(row => [named(row.name), told(row.value, row.unit), row.from ?? "", row.to ?? ""])),
    ...capped(found, "figures"), ...(more ? [make("p", { className: "note", textContent: `${number(more)} more are in the results.` })] : []));
  };
  show("");
  const field = make("input", { type: "search", placeholder: "part of a name", oninput: () => show(field.value) });
  return [make("div", { className: "controls" }, make("label", { className: "choice" }, make("span", { textContent: "Find" }), field)), host];
}

function potentialRows(potentials) {
  return table("Potentials", [{ title: "group" }, { title: "potential" }, { title: "total", number: true }],
    potentials.slice(0, kRows).map(row => [named(row.group), words(row.potential), told(row.total, row.unit)]));
}

export function balanceSection(data) {
  const { account = [], balance = [], figures = [], potentials = [] } = data;
  const body = [];
  if (account.length) {
    const gaps = account.filter(row => row.litres === null || row.litres === undefined).length;
    body.push(make("div", { className: "sides" }, side("What came in", account.filter(row => row.side === "in")),
      side("What went out", account.filter(row => row.side === "out"))));
    if (gaps) body.push(make("p", { className: "note", textContent: `${gaps} rows have no amount; the list by component says why.` }));
    body.push(opened("The account by component", () => accountRows(account)));
  }
  if (balance.length) body.push(opened("The balance of groups and components", () => balanceRows(balance)));
  if (figures.length) body.push(opened("All figures", () => figureRows(figures, data.more_figures)));
  const booked = potentials.filter(row => row.total);
  if (booked.length) body.push(opened("Potentials of the groups", () => potentialRows(booked)));
  if (!body.length) return null;
  return { id: "balance", title: "Balance", body, note: "What came into the network and what left it over the whole period.",
           how: "Point at a figure for its exact value." };
}

// Of one run or sweep, or of several that read the same: `options` of each, by the names of the runs.
function madeRows(made, options, runs) {
  const hash = text => make("code", { className: "hash", textContent: text });
  const rows = [], row = (name, ...content) => rows.push(make("dt", { textContent: name }), make("dd", {}, ...content));
  if (runs) row("Runs", named(runs));
  if (made?.version) row("Version", made.version);
  if (made?.model) row("Model", named(made.model.split(/[\\/]/).pop()));
  if (made?.model_sha256) row("SHA-256", hash(made.model_sha256));
  if (made?.design) row("Design", made.design.table ? named(made.design.table) : "", ` ${number(made.design.members)} members `, hash(made.design.sha256));
  for (const { run, list } of options) {
    row(run ? `Options of ${run}` : "Options", make("code", { textContent: list.map(([name, text]) => `${name} ${text}`.trim()).join(" ") }));
  }
  if (made?.inputs?.length) {
    row("Read", make("ul", {}, ...made.inputs.map(input => make("li", {}, named(input.file), " ", hash(input.sha256)))));
  }
  return rows.length ? make("dl", { className: "made" }, ...rows) : null;
}

// Runs that read the same stand together.
function madeLists(made) {
  if (!made?.parts?.length) return [madeRows(made, made?.options?.length ? [{ list: made.options }] : [])];
  const groups = new Map();
  for (const { run, options, ...same } of made.parts) {
    const key = JSON.stringify(same);
    if (!groups.has(key)) groups.set(key, { same, runs: [], options: [] });
    const group = groups.get(key);
    if (run) group.runs.push(run);
    if (options?.length) group.options.push({ run, list: options });
  }
  return [...groups.values()].map(({ same, runs, options }) => madeRows(same, options, groups.size > 1 ? runs.join(", ") : ""));
}

export function writeMade({ made }) {
  const footer = byId("made");
  footer.prepend(make("h2", { textContent: "How it was made" }),
    make("p", { className: "note", textContent: "Same model, data and version give the same results, bit for bit. This page works offline and needs no other file." }),
    ...madeLists(made).filter(list => list));
  const licences = byId("licences");
  if (!licences.querySelector("pre").textContent.trim()) licences.remove();
}
