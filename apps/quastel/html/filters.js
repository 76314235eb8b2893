// The field and the chips above the table, the way to the open folder above the map, and the counts.
const filters = (() => {
  const field = byId("filter");
  const chips = byId("chips");
  const clear = byId("clear");

  const buttons = report.facets.map((facet, i) => {
    const mark = make("i", "dot hue" + facet.hue);
    mark.setAttribute("aria-hidden", "true");
    const button = make("button", "chip", mark, make("span", "", facet.label),
      make("span", "muted", format.number(facet.count)));
    button.type = "button";
    button.title = report.things(facet.count) + ", " + report.measure(facet.weight);
    button.addEventListener("click", () => {
      const {facets} = selection.state;
      const chosen = new Set(facets);
      if (!chosen.delete(i)) {
        chosen.add(i);
      }
      selection.filter({facets: chosen});
    });
    return button;
  });
  chips.append(...buttons.filter((button, i) => report.facets[i].count > 0));

  const groupChip = make("button", "chip");
  groupChip.type = "button";
  groupChip.setAttribute("aria-pressed", "true");
  groupChip.addEventListener("click", () => {
    selection.filter({group: null});
    field.focus();
  });

  let typing = 0;
  field.addEventListener("input", () => {
    clearTimeout(typing);
    // A long table is not sorted out for every letter of a fast typist.
    typing = setTimeout(() => selection.filter({text: field.value.toLowerCase()}), report.count > 5000 ? 120 : 0);
  });
  clear.addEventListener("click", () => {
    field.value = "";
    selection.filter({text: "", facets: new Set(), group: null, folder: folders.home});
    field.focus();
  });

  function drawTrail() {
    const trail = byId("trail");
    const nodes = folders.trail(selection.state.folder);
    trail.replaceChildren(...nodes.flatMap((node, i) => {
      const label = i === 0 ? folders.pathOf(node) || "Everything" : node.name;
      const button = make("button", "plain", make("bdi", "", format.name(label)));
      button.type = "button";
      if (i + 1 === nodes.length) {
        button.setAttribute("aria-current", "true");
      }
      button.addEventListener("click", () => treemap.openFolder(node));
      return i === 0 ? [button] : [make("span", "muted", "\u203a"), button];
    }));
  }

  function draw() {
    const {state, shown, weight} = selection;
    buttons.forEach((button, i) => button.setAttribute("aria-pressed", String(state.facets.has(i))));
    if (state.group === null) {
      groupChip.remove();
    } else {
      groupChip.replaceChildren("Group " + format.number(state.group + 1) + " \u00d7");
      groupChip.setAttribute("aria-label", "Group " + (state.group + 1) + ", show all groups again");
      chips.append(groupChip);
    }
    clear.hidden = !selection.isFiltered();
    byId("count").textContent = format.number(shown.length) + " of " + format.number(report.count) + " shown, " +
      report.measure(weight);
    drawTrail();
  }

  return {draw};
})();
