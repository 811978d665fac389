"use strict";
/* Draws the plots of the data block. Those of one group (waveforms, spectra) show the same range of the x axis. */
(() => {
  const root = document.documentElement;
  const groups = JSON.parse(document.getElementById("data").textContent);
  const colour = (name) => getComputedStyle(root).getPropertyValue("--" + name).trim();
  const number = (decimals) => (plot, value) => (value == null ? "-" : value.toFixed(decimals));

  const axis = (label, more) => ({
    label,
    stroke: colour("ink"),
    font: "12px system-ui, sans-serif",
    labelFont: "12px system-ui, sans-serif",
    grid: { stroke: colour("line"), width: 1 },
    ticks: { stroke: colour("line"), width: 1 },
    ...more,
  });

  const settings = (group, panel, width) => ({
    width,
    height: 260,
    scales: { x: { time: false, range: (plot, min, max) => [min, max] } },
    cursor: { sync: { key: group.name, scales: ["x", null] }, drag: { x: true, y: false } },
    axes: [axis(group.axis, { size: 34, labelSize: 22 }), axis(panel.axis, { size: 72, labelSize: 22 })],
    series: [
      { label: group.axis, value: number(group.decimals) },
      ...panel.series.map((series) => ({
        label: series.name,
        stroke: colour(series.phase),
        width: 1.25,
        value: number(panel.decimals),
      })),
    ],
    hooks: { setScale: [(plot, key) => key === "x" && follow(group, plot)] },
  });

  /* Gives all plots of a group the range of one of them. */
  const follow = (group, leader) => {
    const { min, max } = leader.scales.x;
    group.view = { min, max };
    for (const plot of group.plots) {
      const { x } = plot.scales;
      if (plot !== leader && (x.min !== min || x.max !== max)) {
        plot.setScale("x", { min, max });
      }
    }
  };

  /* Shows a range of that width inside the axis, [first, last]. */
  const show = (group, middle, width) => {
    const [first, last] = group.ends;
    const wanted = Math.min(width, last - first);
    const min = Math.max(first, Math.min(middle - wanted / 2, last - wanted));
    group.plots[0].setScale("x", { min, max: min + wanted });
  };

  const tools = [
    ["+", "Zoom in", (group, middle, width) => show(group, middle, width / 2)],
    ["\u2212", "Zoom out", (group, middle, width) => show(group, middle, width * 2)],
    ["\u25c0", "Back", (group, middle, width) => show(group, middle - width / 2, width)],
    ["\u25b6", "Forth", (group, middle, width) => show(group, middle + width / 2, width)],
    ["All", "Show all", (group) => show(group, 0, Infinity)],
  ];

  const addTools = (group) => {
    const bar = document.createElement("div");
    bar.className = "tools";
    for (const [text, label, action] of tools) {
      const button = document.createElement("button");
      button.type = "button";
      button.textContent = text;
      button.title = label;
      button.setAttribute("aria-label", label + ": " + group.name);
      button.addEventListener("click", () => {
        const { min, max } = group.view;
        action(group, (min + max) / 2, max - min);
      });
      bar.append(button);
    }
    group.place.prepend(bar);
  };

  /* Lets the keyboard hide and show curves, as a click on their name does. */
  const makeLegendReachable = (plot) => {
    const names = [...plot.root.querySelectorAll(".u-series th")].slice(1);
    for (const name of names) {
      name.tabIndex = 0;
      name.setAttribute("role", "button");
      name.addEventListener("keydown", (event) => {
        if (event.key === "Enter" || event.key === " ") {
          event.preventDefault();
          name.click();
        }
      });
    }
  };

  const widthOf = (element) => (root.classList.contains("printing") ? 660 : element.clientWidth);

  const draw = (group) => {
    const { view } = group;
    group.plots.forEach((plot) => plot.destroy());
    group.plots = [];
    group.plots = group.panels.map((panel, i) => {
      const x = panel.index.map((k) => panel.start + k * panel.step);
      const place = group.place.querySelectorAll(".plot")[i];
      const values = panel.series.map((series) => series.values);
      const plot = new uPlot(settings(group, panel, widthOf(place)), [x, ...values], place);
      makeLegendReachable(plot);
      return plot;
    });
    if (view) {
      group.plots[0].setScale("x", view);
    }
  };

  const redraw = () => groups.forEach(draw);
  for (const group of groups) {
    const ends = group.panels.flatMap(({ index, start, step }) => [start, start + index[index.length - 1] * step]);
    group.ends = [Math.min(...ends), Math.max(...ends)];
    group.place = document.getElementById(group.name);
    group.plots = [];
    if (group.shown > 0) {
      group.view = { min: group.ends[0], max: Math.min(group.ends[0] + group.shown, group.ends[1]) };
    }
    addTools(group);
    draw(group);
  }
  matchMedia("(prefers-color-scheme: dark)").addEventListener("change", redraw);
  addEventListener("resize", () => {
    for (const { plots } of groups) {
      plots.forEach((plot) => plot.setSize({ width: widthOf(plot.root.parentElement), height: plot.height }));
    }
  });
  for (const [event, printing] of [["beforeprint", true], ["afterprint", false]]) {
    addEventListener(event, () => {
      root.classList.toggle("printing", printing);
      redraw();
    });
  }
})();
