// The head of the page: period, size and outcome; then warnings and cards.
import { byId, make, named } from "./dom.js";
import { dayOf, longPeriod } from "./days.js";
import { exact, number, unitFor } from "./units.js";

const kWarningsShown = 8;

const passes = row => row.accepted || row.severity === "note";

function outcomeText(data, warnings) {
  const count = warnings.filter(row => !passes(row)).length + (data.more_warnings ?? 0);
  const said = count === 0 ? "no warnings" : count === 1 ? "1 warning" : `${number(count)} warnings`;
  return `${data.outcome === "finished" ? "finished" : "did not finish"}, ${said}`;
}

export function allWarnings(data) {
  const changes = (data.changes ?? []).map(text => ({ severity: "warning", text }));
  const rows = [...changes, ...(data.warnings ?? [])];
  return [...rows.filter(row => !passes(row)), ...rows.filter(passes)];
}

export function writeHead(data, warnings) {
  const parts = [data.place && named(data.place), longPeriod(dayOf(data.start), dayOf(data.end)),
                 (data.days_per_step ?? 1) !== 1 && `steps of ${number(data.days_per_step)} days, each with one date`,
                 data.components === 1 ? "1 component" : `${number(data.components)} components`,
                 outcomeText(data, warnings)].filter(part => part);
  const lead = byId("lead");
  parts.forEach((part, i) => lead.append(i ? " · " : "", part));
  if (data.outcome !== "finished") {
    byId("alarm").hidden = false;
    byId("alarm").append(make("strong", { textContent: "The run did not finish. " }),
      `It ran ${number(data.steps_run)} of ${number(data.steps)} steps; what follows is of these. `,
      make("span", { className: "message", textContent: data.message ?? "" }));
  }
}

function warning(row) {
  const place = row.file ? ` (${row.file}${row.line ? `:${row.line}` : ""})` : "";
  const kind = row.accepted ? "accepted" : row.severity === "note" ? "note" : "warning";
  return make("li", { className: passes(row) ? "passed" : "" },
    make("span", { className: "kind", textContent: kind }), " ", named(row.text + place),
    row.code ? make("code", { textContent: row.code }) : null);
}

export function warningSection(data, warnings) {
  if (!warnings.length) return null;
  const list = make("ul", { className: "warnings" }, ...warnings.slice(0, kWarningsShown).map(warning));
  const rest = warnings.slice(kWarningsShown);
  const body = [list];
  if (rest.length) {
    const more = make("details", {}, make("summary", { textContent: `${rest.length} more` }),
      make("ul", { className: "warnings" }, ...rest.map(warning)));
    body.push(more);
  }
  if (data.more_warnings) {
    body.push(make("p", { className: "note", textContent:
      `Another ${number(data.more_warnings)} stand in the file summary.json of the results.` }));
  }
  return warnings.every(passes) && !data.more_warnings
    ? { id: "warnings", title: "Accepted warnings and notes", body, note: "Warnings that the model accepts, and notes on how to read the results." }
    : { id: "warnings", title: "Warnings", body, note: "What check and run found doubtful; look at these before you trust the figures." };
}

function aside({ note, name }) {
  const text = note.replaceAll(" %", "\u00a0%"), at = name ? note.indexOf(name) : -1;
  return make("span", { className: "aside" }, ...(at < 0 ? [text] : [text.slice(0, at), named(name), text.slice(at + name.length)]));
}

function card(one) {
  const chosen = unitFor(one.unit, one.value);
  const shown = number(one.value / chosen.factor, chosen.factor === 1 ? one.digits : undefined);
  return make("div", { className: "card", title: one.exact ?? exact(one.value, one.unit) },
    make("dt", { textContent: one.label }),
    make("dd", {}, make("span", { className: "figure", textContent: shown }), " ",
      make("span", { className: "unit", textContent: chosen.unit }),
      one.note ? aside(one) : null));
}

export function cardSection(data) {
  if (!data.cards?.length) return null;
  const cards = make("dl", { className: "cards" }, ...data.cards.map(card)), count = data.cards.length;
  // Rows of the same length, as far as the window has room; a single card is no banner.
  cards.style.setProperty("--across", String(count <= 4 ? Math.max(3, count) : Math.ceil(count / 2)));
  return { id: "figures", title: "Key figures", quiet: true, body: [cards] };
}
