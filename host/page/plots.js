"use strict";
/* Draws the plots of the data block. The plots of one group (waveforms, traces, spectra) show the same part of the x axis. */
(() => {
  const root = document.documentElement;
  const colour = (name) => getComputedStyle(root).getPropertyValue("--" + name).trim();

  /* A new element with these properties. */
  const made = (tag, properties = {}, ...children) => {
    const element = Object.assign(document.createElement(tag), properties);
    element.append(...children);
    return element;
  };

  /* The values of a packed text, NaN where one is missing: see packed() in plots.h. */
  const unpacked = (text, decimals) => {
    const bytes = atob(text.slice(1));
    const scale = 10 ** decimals;
    const values = [];
    let value = 0;
    let slope = 0;
    for (let i = 0; i < bytes.length; ) {
      let number = 0;
      let byte = 128;
      for (let weight = 1; byte > 127; weight *= 128) {
        byte = bytes.charCodeAt(i++);
        number += (byte & 127) * weight;
      }
      if (number === 0) {
        values.push(NaN);
        continue;
      }
      const difference = number % 2 ? (number - 1) / 2 : -number / 2;
      slope = text[0] === "2" ? slope + difference : difference;
      value += slope;
      values.push(value / scale);
    }
    return values;
  };

  /* A number with a minus sign as printed. */
  const fixed = (value, decimals) => value.toFixed(decimals).replace("-", "\u2212");

  /* The decimals that a step needs to be told from its multiples. */
  const decimalsOf = (step) => {
    let decimals = 0;
    while (decimals < 9 && Math.abs(Math.round(step * 10 ** decimals) / 10 ** decimals - step) > 1e-6 * step) {
      ++decimals;
    }
    return decimals;
  };

  /* Curves over one axis. Places are values of the axis. */
  class Panel {
    constructor(data) {
      Object.assign(this, data);
      this.end = this.start + (this.count - 1) * this.step;
      for (const curve of this.curves) {
        for (const key of ["values", "low", "high"]) {
          curve[key] = curve[key] && unpacked(curve[key], curve.decimals);
        }
        curve.isShown = true;
      }
      this.stretch = [this.first, this.first + this.curves[0].values.length - 1];
    }

    placeOf(index) {
      return this.start + index * this.step;
    }

    indexOf(place) {
      return (place - this.start) / this.step;
    }

    bandStart(band) {
      return Math.floor((band * this.count) / this.bands);
    }

    /* The values one by one that a part of the axis shows, one more at each side: indexes into curve.values. */
    valuesIn(from, to) {
      const last = this.stretch[1] - this.first;
      return [
        Math.max(0, Math.floor(this.indexOf(from)) - this.first),
        Math.min(last, Math.ceil(this.indexOf(to)) - this.first),
      ];
    }

    /* The bands in a part of the axis, each as [number, first index, index after the last], without the stretch. */
    *bandsIn(from, to) {
      const [first, last] = this.stretch;
      for (let band = this.bands && Math.max(0, this.bandAt(this.indexOf(from))); band < this.bands; ++band) {
        const begin = this.bandStart(band);
        const end = this.bandStart(band + 1);
        if (begin > this.indexOf(to)) {
          return;
        }
        if (begin < first) {
          yield [band, begin, Math.min(end, first)];
        }
        if (end > last) {
          yield [band, Math.max(begin, last), end];
        }
      }
    }

    bandAt(index) {
      const band = Math.floor((index * this.bands) / this.count);
      return band + (this.bandStart(band + 1) <= index ? 1 : 0);
    }

    isInStretch(index) {
      return this.stretch[0] <= index && index <= this.stretch[1];
    }

    /* Whether a part of the axis has bands in it. */
    hasBandsIn(from, to) {
      const half = 0.5 * this.step;
      return this.bands > 0 && (Math.max(from, this.start) < this.placeOf(this.stretch[0]) - half ||
        Math.min(to, this.end) > this.placeOf(this.stretch[1]) + half);
    }

    /* The smallest and largest value in a part of the axis, with a margin. */
    rangeIn(from, to) {
      let low = Infinity;
      let high = -Infinity;
      const [begin, end] = this.valuesIn(from, to);
      for (const { values, low: lows, high: highs, isShown } of this.curves) {
        for (let k = begin; isShown && k <= end; ++k) {
          low = values[k] < low ? values[k] : low;
          high = values[k] > high ? values[k] : high;
        }
        for (const [band] of isShown ? this.bandsIn(from, to) : []) {
          low = lows[band] < low ? lows[band] : low;
          high = highs[band] > high ? highs[band] : high;
        }
      }
      if (low > high) {
        return [-1, 1];
      }
      for (const { value } of this.levels.filter(({ wanted }) => wanted)) {
        low = Math.min(low, value);
        high = Math.max(high, value);
      }
      const least = 10 ** -Math.max(...this.curves.map(({ decimals }) => decimals));
      const margin = Math.max(0.06 * (high - low), high - low < 4 * least ? 10 * least : 0);
      return [low - margin, high + margin];
    }

    /* Draws a curve by the functions from values to pixels: bands as areas, the stretch as a line, with dots where there is
       room between values. */
    trace(context, curve, from, to, x, y, pixel) {
      context.strokeStyle = context.fillStyle = colour(curve.phase);
      context.globalAlpha = 0.6;
      for (const [band, begin, end] of this.bandsIn(from, to)) {
        const top = y(curve.high[band]);
        const left = x(this.placeOf(begin));
        if (!Number.isNaN(top)) {
          context.fillRect(left, top - 0.5 * pixel, x(this.placeOf(end)) - left, y(curve.low[band]) - top + pixel);
        }
      }
      context.globalAlpha = 1;
      context.lineWidth = 1.25 * pixel;
      context.lineJoin = "round";
      context.beginPath();
      const [begin, end] = this.valuesIn(from, to);
      const spacing = Math.abs(x(this.placeOf(1)) - x(this.placeOf(0)));
      let isDrawing = false;
      for (let k = begin; k <= end; ++k) {
        const value = curve.values[k];
        const place = x(this.placeOf(this.first + k));
        if (Number.isNaN(value)) {
          isDrawing = false;
          continue;
        }
        isDrawing ? context.lineTo(place, y(value)) : context.moveTo(place, y(value));
        isDrawing = true;
      }
      context.stroke();
      for (let k = begin; spacing > 7 * pixel && k <= end; ++k) {
        if (!Number.isNaN(curve.values[k])) {
          context.beginPath();
          context.arc(x(this.placeOf(this.first + k)), y(curve.values[k]), 2 * pixel, 0, 2 * Math.PI);
          context.fill();
        }
      }
    }

    /* The values at a place: [its place, the text of each curve, and its value for a dot]. */
    read(place) {
      const index = Math.max(0, Math.min(this.count - 1, Math.round(this.indexOf(place))));
      const text = ({ decimals }, low, high = "") => (Number.isNaN(low) ? "missing" : `${fixed(low, decimals)}${high} ${this.unit}`);
      if (this.isInStretch(index)) {
        const values = this.curves.map((curve) => curve.values[index - this.first]);
        return { place: this.placeOf(index), texts: values.map((value, k) => text(this.curves[k], value)), values };
      }
      const band = this.bandAt(index);
      const texts = this.curves.map((curve) => text(curve, curve.low[band], ` to ${fixed(curve.high[band], curve.decimals)}`));
      return { place: this.placeOf(index), texts, values: texts.map(() => NaN) };
    }
  }

  const font = "12px system-ui, sans-serif";

  class Group {
    constructor(data) {
      Object.assign(this, data);
      this.panels = data.panels.map((panel) => new Panel(panel));
      this.ends = [Math.min(...this.panels.map((p) => p.start)), Math.max(...this.panels.map((p) => p.end))];
      this.leastWidth = 4 * Math.min(...this.panels.map((p) => p.step));
      this.view = this.shown;
      this.place = document.getElementById(this.name);
      this.plots = [];
      this.addControls();
      this.draw();
    }

    get title() {
      return { waveforms: "Waveforms", traces: "RMS and frequency", spectra: "Spectra" }[this.name];
    }

    /* Whether the x axis counts ms. */
    get isInMilliseconds() {
      return this.unit === "s" && Math.max(...this.view.map(Math.abs)) < 2;
    }

    get axisUnit() {
      return this.isInMilliseconds ? "ms" : this.unit;
    }

    /* A place of the x axis in the unit of the axis. */
    textOf(place, step = this.panels[0].step) {
      const factor = this.isInMilliseconds ? 1000 : 1;
      return fixed(place * factor, decimalsOf(Number((step * factor).toPrecision(2))));
    }

    /* Date and time at a place, with microseconds. */
    clockAt(place) {
      const stamp = BigInt(this.clock) / 1000n + BigInt(Math.round(place * 1e6));
      const second = new Date(Number(stamp / 1000000n) * 1000).toISOString().slice(0, 19).replace("T", " ");
      return `${second}.${String(stamp % 1000000n).padStart(6, "0")}`;
    }

    addControls() {
      const tools = [
        ["+", "Zoom in", () => this.zoom(0.5)],
        ["\u2212", "Zoom out", () => this.zoom(2)],
        ["\u25c0", "Back", () => this.move(-0.5)],
        ["\u25b6", "Forth", () => this.move(0.5)],
        ["All", "Show all", () => this.show(...this.ends)],
        ["First", "First view", () => this.show(...this.shown)],
      ];
      const bar = made("div", { className: "tools" });
      for (const [text, label, action] of tools) {
        const button = made("button", { type: "button", textContent: text, title: label });
        button.setAttribute("aria-label", `${label}: ${this.title}`);
        button.addEventListener("click", action);
        bar.append(button);
      }
      this.status = made("p", { className: "status" });
      this.readout = made("div", { className: "readout" });
      this.readout.setAttribute("role", "status");
      this.cells = [];
      this.addCell(this.readout, this.quantity);
      for (const panel of this.panels) {
        panel.curves.forEach((curve) => this.addCell(this.readout, curve.name, curve));
      }
      this.canvases = made("div", { className: "canvases", tabIndex: 0 });
      this.canvases.setAttribute("role", "group");
      this.canvases.setAttribute("aria-label", `${this.title}: arrow keys move, plus and minus zoom, Home shows the first ` +
        "view, End shows all, Shift with the arrow keys reads values");
      this.canvases.append(...this.place.querySelectorAll(".plot"));
      this.canvases.addEventListener("keydown", (event) => this.press(event));
      this.place.prepend(bar, this.readout, this.canvases, this.status);
      if (this.overview) {
        this.addOverview();
      }
    }

    /* A name with a place for its value; that of a curve is a button that hides and shows it. */
    addCell(readout, name, curve) {
      const value = made("span", { className: "value" });
      const label = made(curve ? "button" : "span", { className: "name" + (curve ? ` phase-${curve.phase}` : ""), textContent: name });
      if (curve) {
        label.type = "button";
        label.title = "Hide or show";
        label.setAttribute("aria-pressed", "true");
        label.addEventListener("click", () => {
          curve.isShown = !curve.isShown;
          label.setAttribute("aria-pressed", curve.isShown);
          this.show(...this.view);
        });
      }
      readout.append(made("span", { className: "cell" }, label, " ", value));
      this.cells.push(value);
    }

    addOverview() {
      this.canvas = made("canvas", { className: "overview" });
      this.canvas.setAttribute("role", "img");
      this.canvas.setAttribute("aria-label", "All of the recording, and the part that is shown above");
      this.canvases.after(this.canvas);
      let isHeld = false;
      const centre = (event) => {
        const { left, width } = this.canvas.getBoundingClientRect();
        const [first, last] = this.ends;
        const place = first + ((event.clientX - left) / width) * (last - first);
        const half = 0.5 * (this.view[1] - this.view[0]);
        this.show(place - half, place + half);
      };
      this.canvas.addEventListener("pointerdown", (event) => {
        isHeld = true;
        this.canvas.setPointerCapture(event.pointerId);
        centre(event);
      });
      this.canvas.addEventListener("pointermove", (event) => isHeld && centre(event));
      for (const end of ["pointerup", "pointercancel"]) {
        this.canvas.addEventListener(end, () => (isHeld = false));
      }
    }

    press(event) {
      const direction = { ArrowLeft: -1, ArrowRight: 1 }[event.key];
      const action = {
        ArrowLeft: () => (event.shiftKey ? this.step(direction) : this.move(0.25 * direction)),
        ArrowRight: () => (event.shiftKey ? this.step(direction) : this.move(0.25 * direction)),
        "+": () => this.zoom(0.5),
        "=": () => this.zoom(0.5),
        "-": () => this.zoom(2),
        Home: () => this.show(...this.shown),
        End: () => this.show(...this.ends),
      }[event.key];
      if (action && !event.ctrlKey && !event.altKey && !event.metaKey) {
        event.preventDefault();
        action();
      }
    }

    /* Shows a part of the axis, as far as it is inside the ends and not too small. */
    show(from, to) {
      const [first, last] = this.ends;
      const width = Math.min(Math.max(to - from, this.leastWidth), last - first);
      const begin = Math.max(first, Math.min(0.5 * (from + to - width), last - width));
      this.view = [begin, begin + width];
      this.plots.forEach((plot, i) => {
        const [min, max] = this.panels[i].rangeIn(...this.view);
        plot.batch(() => {
          plot.setScale("x", { min: this.view[0], max: this.view[1] });
          plot.setScale("y", { min, max });
        });
      });
      this.describe();
      this.drawOverview();
      this.point(this.pointed);
    }

    zoom(factor, around = this.pointed ?? 0.5 * (this.view[0] + this.view[1])) {
      this.show(around - factor * (around - this.view[0]), around + factor * (this.view[1] - around));
    }

    /* Moves by a share of what is shown. */
    move(share) {
      const way = share * (this.view[1] - this.view[0]);
      this.show(this.view[0] + way, this.view[1] + way);
    }

    /* Points at the next value, or at the next pixel where there are several in one. */
    step(direction) {
      const { step } = this.panels[0];
      const pixel = (this.view[1] - this.view[0]) / Math.max(1, this.plots[0].over.clientWidth);
      const middle = 0.5 * (this.view[0] + this.view[1]);
      const place = this.pointed === undefined ? middle : this.pointed + direction * Math.max(1, Math.floor(pixel / step)) * step;
      if (place < this.view[0] || place > this.view[1]) {
        this.move(0.25 * direction);
      }
      this.point(Math.max(this.ends[0], Math.min(place, this.ends[1])));
    }

    describe() {
      const [from, to] = this.view;
      const width = to - from;
      const range = ([a, b]) => `${this.textOf(a, width / 1000)} to ${this.textOf(b, width / 1000)} ${this.axisUnit}`;
      const panel = this.panels[0];
      const stretch = panel.stretch.map((index) => panel.placeOf(index));
      const isBanded = panel.hasBandsIn(from, to);
      const hasStretch = from < stretch[1] && to > stretch[0];
      this.status.textContent = `Shown: ${range(this.view)}, ` +
        (isBanded ? "smallest and largest values as bands" + (hasStretch ? `, every ${this.item} from ${range(stretch)}` : "")
          : `every ${this.item}`) + ".";
    }

    axis(label, more) {
      const lines = { stroke: colour("line"), width: 1 };
      return { label, stroke: colour("ink"), font, labelFont: font, grid: lines, ticks: lines, ...more };
    }

    settings(panel, width, isLast) {
      const clock = this.clock && this.view ? ` after ${this.clockAt(0)}` : "";
      const labels = (plot, splits, axis, space, step) => {
        const factor = axis === 0 && this.isInMilliseconds ? 1000 : 1;
        return splits.map((place) => fixed(place * factor, decimalsOf(step * factor)));
      };
      const range = (plot, min, max) => [min, max];
      return {
        width,
        height: panel.quantity === "Frequency" ? 180 : 240,
        padding: [10, 12, 0, 0],
        legend: { show: false },
        scales: { x: { time: false, range }, y: { auto: false, range } },
        cursor: {
          y: false,
          points: { show: false },
          drag: { x: true, y: false, setScale: false },
          bind: { dblclick: () => () => this.show(...this.ends) },
        },
        axes: [
          this.axis(() => (isLast ? `${this.quantity}, ${this.axisUnit}${clock}` : ""), { size: 30, labelSize: isLast ? 22 : 0, values: labels }),
          this.axis(`${panel.quantity}, ${panel.unit}`, { size: 64, labelSize: 22, values: labels }),
        ],
        series: [{}, { points: { show: false }, paths: () => null }],
        hooks: {
          drawAxes: [(plot) => this.paint(plot, panel)],
          setCursor: [(plot) => this.point(plot.cursor.left >= 0 ? plot.posToVal(plot.cursor.left, "x") : undefined, plot)],
          setSelect: [(plot) => {
            if (plot.select.width > 3) {
              const { left, width } = plot.select;
              this.show(plot.posToVal(left, "x"), plot.posToVal(left + width, "x"));
            }
            plot.setSelect({ left: 0, top: 0, width: 0, height: 0 }, false);
          }],
        },
      };
    }

    /* Draws curves, marks and levels of a panel. */
    paint(plot, panel) {
      const { ctx: context, bbox } = plot;
      const pixel = devicePixelRatio;
      const x = (place) => plot.valToPos(place, "x", true);
      const y = (value) => plot.valToPos(value, "y", true);
      context.save();
      context.beginPath();
      context.rect(bbox.left, bbox.top, bbox.width, bbox.height);
      context.clip();
      this.paintMarks(context, x, bbox.top, bbox.height, pixel);
      context.strokeStyle = context.fillStyle = colour("faint");
      context.font = `${11 * pixel}px system-ui, sans-serif`;
      for (const { label, value } of panel.levels) {
        context.setLineDash([4 * pixel, 4 * pixel]);
        context.beginPath();
        context.moveTo(bbox.left, y(value));
        context.lineTo(bbox.left + bbox.width, y(value));
        context.stroke();
        context.textAlign = "right";
        context.fillText(label, bbox.left + bbox.width - 4 * pixel, y(value) - 3 * pixel);
      }
      context.setLineDash([]);
      for (const curve of panel.curves.filter(({ isShown }) => isShown)) {
        panel.trace(context, curve, ...this.view, x, y, pixel);
      }
      this.paintLabels(context, x, bbox.top, pixel);
      context.restore();
    }

    paintMarks(context, x, top, height, pixel) {
      for (const { from, to } of this.marks) {
        context.fillStyle = colour("accent");
        context.globalAlpha = 0.12;
        context.fillRect(x(from), top, x(to) - x(from), height);
        context.globalAlpha = 1;
        context.fillRect(x(from) - 0.5 * pixel, top, pixel, height);
      }
    }

    /* The names of the marks, as far as they do not cover one another. */
    paintLabels(context, x, top, pixel) {
      context.font = `${11 * pixel}px system-ui, sans-serif`;
      context.textAlign = "left";
      let free = -Infinity;
      for (const { from, label } of this.marks.filter(({ from, to }) => to >= this.view[0] && from <= this.view[1])) {
        const left = x(Math.max(from, this.view[0])) + 4 * pixel;
        const width = context.measureText(label).width;
        if (left > free) {
          context.fillStyle = colour("paper");
          context.globalAlpha = 0.8;
          context.fillRect(left - 2 * pixel, top + pixel, width + 4 * pixel, 15 * pixel);
          context.globalAlpha = 1;
          context.fillStyle = colour("accent");
          context.fillText(label, left, top + 12 * pixel);
          free = left + width + 8 * pixel;
        }
      }
    }

    drawOverview() {
      if (!this.canvas) {
        return;
      }
      const lane = 34;
      const width = widthOf(this.place);
      const height = lane * this.panels.length;
      const pixel = devicePixelRatio;
      Object.assign(this.canvas, { width: width * pixel, height: height * pixel });
      Object.assign(this.canvas.style, { width: `${width}px`, height: `${height}px` });
      const context = this.canvas.getContext("2d");
      const [first, last] = this.ends;
      const x = (place) => ((place - first) / (last - first)) * width * pixel;
      this.panels.forEach((panel, i) => {
        panel.whole ??= panel.rangeIn(...this.ends);
        const [low, high] = panel.whole;
        const y = (value) => (lane * (i + 1) - 2 - ((value - low) / (high - low)) * (lane - 4)) * pixel;
        for (const curve of panel.curves) {
          panel.trace(context, curve, ...this.ends, x, y, pixel);
        }
      });
      this.paintMarks(context, x, 0, height * pixel, pixel);
      const [left, right] = this.view.map(x);
      context.fillStyle = colour("paper");
      context.globalAlpha = 0.65;
      context.fillRect(0, 0, left, height * pixel);
      context.fillRect(right, 0, width * pixel - right, height * pixel);
      context.globalAlpha = 1;
      context.strokeStyle = colour("accent");
      context.lineWidth = 2 * pixel;
      context.strokeRect(left, pixel, Math.max(right - left, 2 * pixel), height * pixel - 2 * pixel);
    }

    /* Shows the values at a place, and the place in all plots but the one that the pointer is in; undefined: none. */
    point(place, source) {
      this.pointed = place;
      const readings = this.panels.map((panel) => (place === undefined ? undefined : panel.read(place)));
      const shown = readings[0]?.place;
      const texts = [shown === undefined ? "\u2013" : `${this.textOf(shown, this.panels[0].step / 10)} ${this.axisUnit}` +
        (this.clock ? ` (${this.clockAt(shown).slice(11)})` : "")];
      this.panels.forEach((panel, i) => panel.curves.forEach((curve, k) => texts.push(readings[i]?.texts[k] ?? "\u2013")));
      this.cells.forEach((cell, i) => (cell.textContent = texts[i]));
      this.plots.forEach((plot, i) => {
        if (plot !== source) {
          plot.setCursor({ left: place === undefined ? -10 : plot.valToPos(place, "x"), top: place === undefined ? -10 : 1 }, false, false);
        }
        this.placeDots(plot, this.panels[i], readings[i]);
      });
    }

    placeDots(plot, panel, reading) {
      panel.curves.forEach((curve, k) => {
        const dot = plot.dots[k];
        const value = reading?.values[k] ?? NaN;
        dot.hidden = Number.isNaN(value) || !curve.isShown;
        if (!dot.hidden) {
          dot.style.translate = `${plot.valToPos(reading.place, "x")}px ${plot.valToPos(value, "y")}px`;
        }
      });
    }

    /* One finger moves the axis, two move and stretch it: the places under the fingers stay there. */
    addTouch(plot) {
      const fingers = new Map();
      const { over } = plot;
      over.addEventListener("pointerdown", (event) => {
        if (event.pointerType === "touch") {
          fingers.set(event.pointerId, event.clientX);
        }
      });
      over.addEventListener("pointermove", (event) => {
        if (!fingers.has(event.pointerId)) {
          return;
        }
        const { left, width } = over.getBoundingClientRect();
        const [from, to] = this.view;
        const places = [...fingers.values()].map((x) => from + ((x - left) / width) * (to - from));
        fingers.set(event.pointerId, event.clientX);
        const pixels = [...fingers.values()].map((x) => x - left);
        if (places.length === 1) {
          const begin = places[0] - (pixels[0] / width) * (to - from);
          this.show(begin, begin + to - from);
        } else if (Math.abs(pixels[1] - pixels[0]) > 10) {
          const scale = (places[1] - places[0]) / (pixels[1] - pixels[0]);
          const begin = places[0] - scale * pixels[0];
          if (scale > 0) {
            this.show(begin, begin + scale * width);
          }
        }
      });
      for (const end of ["pointerup", "pointercancel"]) {
        over.addEventListener(end, (event) => fingers.delete(event.pointerId));
      }
      over.addEventListener("wheel", (event) => {
        if (event.ctrlKey) {
          event.preventDefault();
          this.zoom(2 ** (event.deltaY / 200), plot.posToVal(event.offsetX, "x"));
        }
      }, { passive: false });
    }

    draw() {
      this.plots.forEach((plot) => plot.destroy());
      this.plots = [];
      this.plots = this.panels.map((panel, i) => {
        const place = this.canvases.children[i];
        const settings = this.settings(panel, widthOf(this.place), i === this.panels.length - 1);
        const plot = new uPlot(settings, [this.ends, [null, null]], place);
        plot.dots = panel.curves.map((curve) => made("i", { className: `dot phase-${curve.phase}`, hidden: true }));
        plot.over.append(...plot.dots);
        this.addTouch(plot);
        return plot;
      });
      this.show(...this.view);
    }

    resize() {
      this.plots.forEach((plot) => plot.setSize({ width: widthOf(this.place), height: plot.height }));
      this.show(...this.view);
    }
  }

  const widthOf = (element) => (root.classList.contains("printing") ? 660 : element.clientWidth);

  /* Shows the figures of the order of harmonics under the pointer, or chosen by the arrow keys. */
  for (const place of document.querySelectorAll(".harmonics")) {
    const orders = [...place.querySelectorAll(".order")];
    const figures = place.querySelector(".figures");
    let chosen = -1;
    const choose = (index) => {
      orders[chosen]?.classList.remove("chosen");
      chosen = index;
      orders[chosen].classList.add("chosen");
      figures.textContent = orders[chosen].querySelector("title").textContent;
    };
    orders.forEach((order, index) => order.addEventListener("pointerenter", () => choose(index)));
    place.querySelector(".scroll").addEventListener("keydown", (event) => {
      const direction = { ArrowLeft: -1, ArrowRight: 1 }[event.key];
      if (direction) {
        event.preventDefault();
        choose(Math.max(0, Math.min(orders.length - 1, chosen + direction)));
      }
    });
  }

  const groups = JSON.parse(document.getElementById("data").textContent).map((data) => new Group(data));
  matchMedia("(prefers-color-scheme: dark)").addEventListener("change", () => groups.forEach((group) => group.draw()));
  addEventListener("resize", () => groups.forEach((group) => group.resize()));
  for (const [event, printing] of [["beforeprint", true], ["afterprint", false]]) {
    addEventListener(event, () => {
      root.classList.toggle("printing", printing);
      groups.forEach((group) => group.draw());
    });
  }
})();
