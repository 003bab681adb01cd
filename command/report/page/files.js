// Files that the reader takes along: a table or a picture of what is seen.
import { make } from "./dom.js";
import { colour, font, widthOf, wrapped } from "./chart.js";

export function save(name, content) {
  const url = URL.createObjectURL(content);
  make("a", { href: url, download: name }).click();
  setTimeout(() => URL.revokeObjectURL(url), 10000);
}

export const fileName = (title, ending) => `${title.replace(/[^\p{L}\p{N}]+/gu, "-").replace(/^-|-$/g, "").slice(0, 60) || "kesto"}.${ending}`;

const quoted = text => /[",\n\r]/.test(text) ? `"${text.replaceAll('"', '""')}"` : text;

// A cell that a spreadsheet would take for a formula gets a mark before it.
const harmless = text => /^[=+\-@\t]/.test(text) ? `'${text}` : text;

export function csv(head, rows) {
  const lines = [head.map(text => quoted(harmless(text))), ...rows.map(row => row.map(value => value === null || value === undefined ? "" : String(value)))];
  return new Blob([lines.map(line => line.join(",")).join("\n"), "\n"], { type: "text/csv" });
}

// Charts of uPlot one beneath the other, with a title and what each line is.
export function picture(title, entries, plots, whenDone) {
  const scale = 2, width = Math.max(...plots.map(plot => plot.width)), side = 12, line = 20;
  const legend = [];
  let x = side, y = 0;
  for (const entry of entries) {
    const text = wrapped(entry.label, width - 60, 1, 12)[0];
    const needed = widthOf(text) + 44;
    if (x > side && x + needed > width) {
      x = side;
      y += line;
    }
    legend.push({ ...entry, text, x, y });
    x += needed;
  }
  const head = 34 + y + line;
  const canvas = make("canvas", { width: width * scale, height: (head + plots.reduce((sum, plot) => sum + plot.height, 0) + 8) * scale });
  const pen = canvas.getContext("2d");
  pen.scale(scale, scale);
  pen.fillStyle = colour("--card");
  pen.fillRect(0, 0, canvas.width, canvas.height);
  pen.fillStyle = colour("--ink");
  pen.font = `bold ${font(14)}`;
  pen.fillText(wrapped(title, width - 2 * side, 1, 14)[0] ?? "", side, 22);
  pen.font = font(12);
  for (const entry of legend) {
    pen.strokeStyle = colour(entry.colour);
    pen.lineWidth = 2.5;
    pen.setLineDash(entry.dash ?? []);
    pen.beginPath();
    pen.moveTo(entry.x, 42 + entry.y);
    pen.lineTo(entry.x + 22, 42 + entry.y);
    pen.stroke();
    pen.fillText(entry.text, entry.x + 28, 46 + entry.y);
  }
  let top = head;
  for (const plot of plots) {
    pen.drawImage(plot.ctx.canvas, 0, top, plot.width, plot.height);
    top += plot.height;
  }
  canvas.toBlob(whenDone, "image/png");
}
