// Puts the sections one beneath the other, with a list of them at the top.
import { byId, make } from "./dom.js";
import { watchPage } from "./chart.js";
import { data, stepWord } from "./data.js";
import { dayOf, longPeriod } from "./days.js";
import { allWarnings, cardSection, warningSection, writeHead } from "./header.js";
import { sankeySection } from "./sankey.js";
import { monthSection, yearSection } from "./months.js";
import { storeSection } from "./stores.js";
import { networkSection } from "./network.js";
import { seriesSection } from "./series.js";
import { balanceSection, writeMade } from "./balance.js";
import { figureSection, overlaySection, runSection, writeCompareHead } from "./compare.js";
import { sweepSection } from "./sweep.js";

function put(section) {
  const heading = make("h2", { textContent: section.title, id: `${section.id}-title`, className: section.quiet ? "hidden" : "" });
  const how = section.how ? make("span", { className: "screen", textContent: ` ${section.how}` }) : null;
  byId("main").append(make("section", { id: section.id, "aria-labelledby": heading.id, className: section.quiet ? "quiet" : "" }, heading,
    section.note ? make("p", { className: "note under" }, section.note, how) : null,
    ...section.body));
}

function contents(sections) {
  byId("contents").append(...sections.filter(section => !section.quiet).map(section => make("a", { href: `#${section.id}`, textContent: section.title,
    onclick: event => {
      // The address stays what it is: it says what is shown.
      event.preventDefault();
      byId(section.id).scrollIntoView();
      const heading = byId(`${section.id}-title`);
      heading.tabIndex = -1;
      heading.focus({ preventScroll: true });
    } })));
}

function runSections() {
  const warnings = allWarnings(data);
  writeHead(data, warnings);
  const days = data.steps_run, start = dayOf(data.start);
  // Steps that are no days make no years.
  const period = { years: stepWord === "day" ? days / 365.25 : 0, period: longPeriod(start, start + Math.max(0, days - 1)) };
  return [warningSection(data, warnings), cardSection(data), sankeySection({ paths: data.paths, ...period }), monthSection(data), yearSection(data),
          storeSection(data), networkSection(data), seriesSection(), balanceSection(data)];
}

function compareSections() {
  writeCompareHead(data);
  byId("drawing").remove();
  return [runSection(data), sweepSection(data), figureSection(data), overlaySection(data)];
}

const sections = (data.compare ? compareSections() : runSections()).filter(section => section);
sections.forEach(put);
contents(sections);
writeMade(data);
watchPage();
// In the order of the page, each once it stands in it.
sections.forEach(section => section.ready?.());
document.documentElement.dataset.ready = "yes";
