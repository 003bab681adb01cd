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

const kScale = 2, kSide = 12, kLine = 20, kTitle = 34;

// Where each entry of the legend goes, in lines as wide as the picture.
function placedLegend(entries, width) {
  let x = kSide, y = kTitle + 8;
  const placed = entries.map(entry => {
    const text = wrapped(entry.label, width - 60, 1, 12)[0] ?? "", needed = widthOf(text) + 44;
    if (x > kSide && x + needed > width) {
      x = kSide;
      y += kLine;
    }
    x += needed;
    return { ...entry, text, x: x - needed, y };
  });
  return { placed, height: y - 8 + kLine };
}

function drawLegend(pen, legend) {
  pen.font = font(12);
  for (const { colour: name, dash, text, x, y } of legend) {
    pen.strokeStyle = colour(name);
    pen.lineWidth = 2.5;
    pen.setLineDash(dash ?? []);
    pen.beginPath();
    pen.moveTo(x, y);
    pen.lineTo(x + 22, y);
    pen.stroke();
    pen.fillText(text, x + 28, y + 4);
  }
}

// Charts of uPlot one beneath the other, with a title and what each line is.
export function picture(title, entries, plots, whenDone) {
  const width = Math.max(...plots.map(plot => plot.width)), { placed, height: head } = placedLegend(entries, width);
  const canvas = make("canvas", { width: width * kScale, height: (head + plots.reduce((sum, plot) => sum + plot.height, 0) + 8) * kScale });
  const pen = canvas.getContext("2d");
  pen.scale(kScale, kScale);
  pen.fillStyle = colour("--card");
  pen.fillRect(0, 0, canvas.width, canvas.height);
  pen.fillStyle = colour("--ink");
  pen.font = `bold ${font(14)}`;
  pen.fillText(wrapped(title, width - 2 * kSide, 1, 14)[0] ?? "", kSide, 22);
  drawLegend(pen, placed);
  let top = head;
  for (const plot of plots) {
    pen.drawImage(plot.ctx.canvas, 0, top, plot.width, plot.height);
    top += plot.height;
  }
  canvas.toBlob(whenDone, "image/png");
}
