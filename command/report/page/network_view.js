// A window on a drawing that is larger than it: drag to pan; buttons, keys, or the wheel with Ctrl to zoom; two fingers for both.
import { button, make } from "./dom.js";

const kStep = 1.3, kLeast = 40;

export class View {
  constructor(label) {
    this.label = label;
    this.frame = make("div", { className: "frame", tabIndex: 0, role: "group", "aria-label": `${label}. Arrow keys pan, plus and minus zoom, 0 shows all.` });
    this.zoomButtons = make("div", { className: "zoom screen", role: "group", "aria-label": "Zoom" },
      button("+", () => this.zoom(1 / kStep), { "aria-label": "Zoom in" }), button("−", () => this.zoom(kStep), { "aria-label": "Zoom out" }),
      button("Fit", () => this.fit()));
    this.node = make("div", { className: "viewport" }, this.frame);
    this.frame.addEventListener("wheel", event => this.wheel(event), { passive: false });
    this.frame.addEventListener("keydown", event => this.key(event));
    this.frame.addEventListener("pointerdown", event => this.grab(event));
    for (const name of ["touchstart", "touchmove"]) this.frame.addEventListener(name, event => this.pinch(event), { passive: false });
    // What a drag ends on is not clicked.
    this.frame.addEventListener("click", event => this.moved && event.stopPropagation(), true);
    this.frame.addEventListener("focusin", event => event.target.matches(":focus-visible") && this.reveal(event.target));
    addEventListener("beforeprint", () => {
      this.before = this.box && { ...this.box };
      if (this.drawing) this.fit();
    });
    addEventListener("afterprint", () => this.before && this.set(this.before));
  }

  show(drawing) {
    this.drawing = drawing;
    this.frame.replaceChildren(drawing);
    this.full = drawing.full;
    drawing.removeAttribute("width");
    drawing.removeAttribute("height");
    drawing.setAttribute("preserveAspectRatio", "xMidYMid meet");
    this.fit();
  }

  // A small drawing is not blown up.
  fit() {
    if (!this.full) return;
    const width = Math.max(this.full.width, Math.min(this.frame.clientWidth || 680, 1600) / 1.25);
    this.set({ x: this.full.x - (width - this.full.width) / 2, y: this.full.y, width, height: this.full.height });
    this.frame.style.aspectRatio = `${width} / ${Math.max(this.full.height, width * 0.28)}`;
  }

  set(box) {
    this.box = box;
    this.drawing.setAttribute("viewBox", `${box.x} ${box.y} ${box.width} ${box.height}`);
  }

  // Pixels of the drawing for one of the screen.
  scale() {
    const bounds = this.frame.getBoundingClientRect();
    return Math.max(this.box.width / bounds.width, this.box.height / bounds.height);
  }

  zoom(factor, at) {
    if (!this.box) return;
    const { x, y, width, height } = this.box;
    const least = kLeast / width, most = this.full.width * 4 / width;
    const by = Math.min(most, Math.max(least, factor));
    const [cx, cy] = at ?? [x + width / 2, y + height / 2];
    this.set({ x: cx - (cx - x) * by, y: cy - (cy - y) * by, width: width * by, height: height * by });
  }

  place(event) {
    const bounds = this.frame.getBoundingClientRect(), scale = this.scale();
    const { x, y, width, height } = this.box;
    return [x + width / 2 + (event.clientX - bounds.left - bounds.width / 2) * scale,
            y + height / 2 + (event.clientY - bounds.top - bounds.height / 2) * scale];
  }

  wheel(event) {
    if (!event.ctrlKey && !event.metaKey) return;  // the page scrolls
    event.preventDefault();
    this.zoom(event.deltaY > 0 ? kStep : 1 / kStep, this.place(event));
  }

  key(event) {
    const step = 0.15, { box } = this;
    const moves = { ArrowLeft: [-step, 0], ArrowRight: [step, 0], ArrowUp: [0, -step], ArrowDown: [0, step] };
    if (!box || event.ctrlKey || event.metaKey || event.altKey) return;
    if (moves[event.key]) this.set({ ...box, x: box.x + moves[event.key][0] * box.width, y: box.y + moves[event.key][1] * box.height });
    else if (event.key === "+" || event.key === "=") this.zoom(1 / kStep);
    else if (event.key === "-") this.zoom(kStep);
    else if (event.key === "0") this.fit();
    else return;
    event.preventDefault();
  }

  grab(event) {
    this.moved = false;
    if (event.button !== 0 || !this.box || event.pointerType === "touch") return;
    const start = { x: event.clientX, y: event.clientY, box: { ...this.box } }, scale = this.scale();
    const move = next => {
      const dx = next.clientX - start.x, dy = next.clientY - start.y;
      if (!this.moved && Math.hypot(dx, dy) < 4) return;
      this.moved = true;
      this.frame.classList.add("grabbed");
      this.set({ ...start.box, x: start.box.x - dx * scale, y: start.box.y - dy * scale });
    };
    const end = () => {
      removeEventListener("pointermove", move);
      removeEventListener("pointerup", end);
      this.frame.classList.remove("grabbed");
    };
    addEventListener("pointermove", move);
    addEventListener("pointerup", end);
  }

  // Two fingers hold on to the places of the drawing below them; one scrolls the page.
  pinch(event) {
    const before = this.fingers;
    this.fingers = null;
    if (event.touches.length !== 2 || !this.box) return;
    event.preventDefault();
    const [a, b] = event.touches;
    this.fingers = { clientX: (a.clientX + b.clientX) / 2, clientY: (a.clientY + b.clientY) / 2,
                     apart: Math.hypot(a.clientX - b.clientX, a.clientY - b.clientY) };
    if (!before) return;
    const held = this.place(before);
    this.zoom(before.apart / this.fingers.apart, held);
    const [x, y] = this.place(this.fingers);
    this.set({ ...this.box, x: this.box.x + held[0] - x, y: this.box.y + held[1] - y });
  }

  // Pans to a part of the drawing that lies beyond the frame.
  reveal(part) {
    if (part === this.frame || !this.box) return;
    const seen = this.frame.getBoundingClientRect(), { left, right, top, bottom } = part.getBoundingClientRect();
    const beyond = (low, high, from, to) => low < from || high > to ? (low + high - from - to) / 2 : 0;
    const dx = beyond(left, right, seen.left, seen.right), dy = beyond(top, bottom, seen.top, seen.bottom);
    if (dx || dy) this.set({ ...this.box, x: this.box.x + dx * this.scale(), y: this.box.y + dy * this.scale() });
  }
}
