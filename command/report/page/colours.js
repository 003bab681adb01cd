// One colour for one thing on the whole page: those of Okabe and Ito, which colour-blind readers tell apart.
const kKinds = {
  mains: "--blue", source: "--blue", rain: "--sky", store: "--green", reuse: "--purple", works: "--purple", use: "--slate",
  unmet: "--vermillion", sink: "--grey", other: "--grey", well: "--orange", drawn: "--orange", created: "--orange",
};
const kNames = [[/mains/i, "--blue"], [/rain|run-?off|snow/i, "--sky"], [/unmet|not served|shortage/i, "--vermillion"],
  [/greywater|reuse|recycl|treat/i, "--purple"], [/well|ground|river|lake|drawn/i, "--orange"],
  [/evapor/i, "--yellow"], [/nothing/i, "--slate"]];

export function colourOf(kind, label = "") {
  const byName = kind === "source" || !kKinds[kind] ? kNames.find(([pattern]) => pattern.test(label)) : null;
  return `var(${byName ? byName[1] : kKinds[kind] ?? "--grey"})`;
}

// Several in one picture: what comes later takes the next colour that is free.
export function coloursOf(rows) {
  const free = ["--blue", "--sky", "--green", "--orange", "--purple", "--yellow", "--vermillion", "--slate", "--grey"]
    .map(name => `var(${name})`);
  const taken = new Set();
  return rows.map(({ kind, label }) => {
    const wanted = colourOf(kind, label);
    const found = taken.has(wanted) ? free.find(one => !taken.has(one)) ?? wanted : wanted;
    taken.add(found);
    return found;
  });
}

// Of series in a chart, in this order; the ink is the last that tells anything new.
export const kSeriesColours = ["--blue", "--vermillion", "--green", "--purple", "--orange", "--sky", "--slate", "--yellow"];
