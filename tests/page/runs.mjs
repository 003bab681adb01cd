// The runs that the pages show, made by the command in a folder of their own.
import assert from "node:assert/strict";
import { spawnSync } from "node:child_process";
import fs from "node:fs";
import os from "node:os";
import path from "node:path";

const kKesto = process.env.KESTO, kExamples = process.env.KESTO_EXAMPLES;

export const examples = kExamples;
export const charts = process.env.KESTO_CHARTS !== "OFF";
export const folder = fs.mkdtempSync(path.join(os.tmpdir(), "kesto-page-"));
process.on("exit", () => fs.rmSync(folder, { recursive: true, force: true }));

function kesto(...args) {
  const done = spawnSync(kKesto, args, { encoding: "utf8", timeout: 300000 });
  return { status: done.status, said: done.stdout + done.stderr };
}

function written(name, text) {
  const file = path.join(folder, name);
  fs.writeFileSync(file, text);
  return file;
}

const csvOf = rows => rows.map(row => `${row}\n`).join("");

// Runs a model and makes its page; `status` is what the run is to end with.
export function page(name, model, { status = 0, options = [], more = [] } = {}) {
  const results = path.join(folder, `${name}-results`), file = path.join(folder, `${name}.html`);
  const ran = kesto("run", model, "-q", "-o", results, ...options);
  assert.equal(ran.status, status, ran.said);
  const made = kesto("report", results, "-o", file, ...more);
  assert.equal(made.status, 0, made.said);
  return file;
}

export const house = () => page("house", path.join(kExamples, "rainwater-house/model.toml"), { options: ["--balance"] });
export const town = () => page("town", path.join(kExamples, "town/model.toml"));
export const office = () => page("office", path.join(kExamples, "office-greywater/model.toml"));

const houses = (name, set) => {
  const results = path.join(folder, name);
  const ran = kesto("run", path.join(kExamples, "rainwater-house/model.toml"), "-q", "-o", results, "--set", set);
  assert.equal(ran.status, 0, ran.said);
  return results;
};

// Four sizes of the tank, side by side.
export function comparison() {
  const runs = ["1", "2", "5", "0.5"].map(size => houses(`tank of ${size} m3`, `tank.size=${size} m3`)), file = path.join(folder, "comparison.html");
  const made = kesto("compare", ...runs, "-o", file);
  assert.equal(made.status, 0, made.said);
  return file;
}

// Eight sizes of the tank under three roofs.
export function sweep() {
  const results = path.join(folder, "sweep"), file = path.join(folder, "sweep.html");
  const ran = kesto("sweep", path.join(kExamples, "rainwater-house/model.toml"), "--vary", "tank.size=500,1000,1500,2000,3000,4000,5000,8000",
    "--vary", "roof.size=40,60,100", "-o", results);
  assert.equal(ran.status, 0, ran.said);
  const made = kesto("compare", results, "-o", file);
  assert.equal(made.status, 0, made.said);
  return file;
}

// A sweep of the house over a table of members; lines of CSV.
export function tableSweep(name, lines) {
  const table = written(`${name}.csv`, csvOf(lines)), results = path.join(folder, name), file = path.join(folder, `${name}.html`);
  const ran = kesto("sweep", path.join(kExamples, "rainwater-house/model.toml"), table, "-q", "-o", results);
  assert.equal(ran.status, 0, ran.said);
  const made = kesto("compare", results, "-o", file);
  assert.equal(made.status, 0, made.said);
  return file;
}

// An intake of which two members of three ask too much.
export function failingSweep() {
  const results = path.join(folder, "failing"), file = path.join(folder, "failing.html");
  const ran = kesto("sweep", failedModel(), "--vary", "brands.intake.daily_capacity=10,100,20", "-q", "-o", results);
  assert.equal(ran.status, 1, ran.said);
  const made = kesto("compare", results, "-o", file);
  assert.equal(made.status, 0, made.said);
  return file;
}

// The page with other data: as what a command could give that no example does.
export function changed(file, name, change) {
  const text = fs.readFileSync(file, "utf8");
  const [whole, json] = /<script type="application\/json" id="data">(.*?)<\/script>/s.exec(text);
  const data = JSON.parse(json);
  change(data);
  return written(`${name}.html`, text.replace(whole, () => whole.replace(json, () => JSON.stringify(data).replaceAll("<", "\\u003c"))));
}

// More is asked of an intake than it can deliver: the run stops on its third day.
function failedModel() {
  written("asked.csv", csvOf(["date,asked", ...[2, 5, 20, 30, 40].map((litres, i) => `2012-01-0${i + 1},${litres}`)]));
  return written("failed.toml", `kesto_model = 1
[simulation]
start = 2012-01-01
end = 2012-01-05
stop_on_infeasible = true
[brands.intake]
daily_capacity = 10
loss_fraction = 0.1
[[components]]
name = "asked"
type = "demand_source"
demand = { column = "asked", file = "asked.csv", time = "date" }
[[components]]
name = "intake"
type = "abstraction"
brand = "intake"
[[connections]]
from = "asked"
to = "intake"
`);
}

export const failed = () => page("failed", failedModel(), { status: 1 });

// Names in other scripts, names that look like markup, a formula or nothing, and names longer than a window.
export const hostile = ["</script><script>alert(1)</script>", "<img src=x onerror=alert(1)>", "مرحبا بالعالم מים", "a&amp;b<b>&lt;",
  `Donau${"dampfschifffahrts".repeat(8)}gesellschaft`, "\\u202Ereversed", "=1+1", "💧".repeat(30), "a name of many words that goes on and on ".repeat(5).trim()];

export function hostileNames() {
  let text = fs.readFileSync(path.join(kExamples, "rainwater-house/model.toml"), "utf8");
  fs.copyFileSync(path.join(kExamples, "rainwater-house/weather.csv"), path.join(folder, "weather.csv"));
  const names = ["toilet", "shower", "bath", "taps", "tank", "garden", "drain", "mains", "rainwater_asked"];
  names.forEach((name, i) => {
    text = text.replaceAll(`name = "${name}"`, `name = "${hostile[i]}"`)
      .replace(new RegExp(`(from|to) = "${name}(:\\w+)?"`, "g"), (_, end, port = "") => `${end} = "${hostile[i]}${port}"`);
  });
  text = text.replace('title = "House with a rainwater tank"', `title = "${hostile[0]} ${hostile[4]}"`);
  return page("hostile", written("hostile.toml", text));
}

const kHouse = [["wc", "appliance", 1, "toilet"], ["shower", "appliance", 2, "shower"], ["bath", "appliance", 4, "shower"], ["taps", "appliance", 5, "tap"],
                ["dishwasher", "appliance", 6, "toilet"], ["washing", "appliance", 10, "shower"], ["roof", "impervious_surface", "", "roof"],
                ["tank", "tank", "", ""], ["mains", "junction", "", ""], ["drain", "junction", "", ""]];
const kPipes = [["roof", "tank:inflow"], ["wc:demand", "tank:demand"], ["tank:deficit", "mains"], ["shower:demand", "mains"], ["bath:demand", "mains"],
                ["taps:demand", "mains"], ["dishwasher:demand", "mains"], ["washing:demand", "mains"], ["wc:wastewater", "drain"], ["shower:wastewater", "drain"],
                ["bath:wastewater", "drain"], ["taps:wastewater", "drain"], ["dishwasher:wastewater", "drain"], ["washing:wastewater", "drain"], ["tank:overflow", "drain"]];

// Households of ten components, each a group of its own, with two months of made-up rain.
export function households(count) {
  const all = Array.from({ length: count }, (_, i) => i);
  const at = (name, i) => name.replace(/^\w+/, part => `${part}${i}`);
  written("rain.csv", csvOf(["date,rain", ...Array.from({ length: 60 }, (_, day) =>
    `${new Date(Date.UTC(2012, 0, 1 + day)).toISOString().slice(0, 10)},${day % 4 ? 0 : day % 7 * 5}`)]));
  const sizeOf = (type, i) => type === "tank" ? 500 + 50 * (i % 60) : type === "impervious_surface" ? 40 + i % 80 : "";
  written("parts.csv", csvOf(["name,type,kind,brand,group,size,initial_storage", ...all.flatMap(i => kHouse.map(([name, type, kind, brand]) =>
    [`${name}${i}`, type, kind, brand, `house${i}`, sizeOf(type, i), type === "tank" ? 100 : ""].join(","))),
  "street,junction,,,,,", "sewer,water_body,,,,,"]));
  written("pipes.csv", csvOf(["from,to", ...all.flatMap(i => [...kPipes.map(([from, to]) => `${at(from, i)},${at(to, i)}`), `drain${i},street`]),
    "street,sewer"]));
  const model = written(`households${count}.toml`, `kesto_model = 1
title = "${count} households"
[simulation]
start = 2012-01-01
end = 2012-02-29
[series]
file = "rain.csv"
time = "date"
rainfall = "rain"
[tables]
components = "parts.csv"
connections = "pipes.csv"
[brands.toilet]
volume_per_use = 6
[brands.shower]
volume_per_use = 50
[brands.tap]
volume_per_use = 1
[brands.roof]
evaporation_fraction = 0.1
${all.map(i => `[groups.house${i}]\noccupancy = ${1 + i % 5}\nuses = { 1 = 5, 2 = 0.6, 4 = 0.2, 5 = 20, 6 = 0.2, 10 = 0.5 }\n`).join("")}`);
  return page(`households${count}`, model, { options: ["--format", "netcdf"] });
}
