// What the command left in the page.
import { byId } from "./dom.js";

export const data = JSON.parse(byId("data").textContent);

// What a row of the run is: where a step is not a day, the calendar still moves one day a step.
export const stepWord = (data.days_per_step ?? 1) === 1 ? "day" : "step";

// Little-endian floats; what is no number is a gap.
export function unpacked(base64) {
  const bytes = Uint8Array.from(atob(base64), c => c.charCodeAt(0));
  const view = new DataView(bytes.buffer);
  return Array.from({ length: bytes.length / 4 }, (_, i) => {
    const value = view.getFloat32(4 * i, true);
    return Number.isFinite(value) ? value : null;
  });
}
