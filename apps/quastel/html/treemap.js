// The map of the open folder: a tile for each folder and file in it, as large as what was found there,
// with smaller tiles inside as far as there is room.
const treemap = (() => {
  const mostTiles = 420;
  const smallestTile = 150;     // square pixels; what is smaller shares a tile
  const smallestOpen = 6000;    // a folder below this shows nothing of what is in it
  const headHeight = 22;
  const hueCount = 10;

  const box = byId("map");
  const tip = byId("tip");
  const frame = make("div", "frame");
  frame.hidden = true;

  // What the rows that pass the filters weigh, folder by folder.
  let sums = null;
  function sum() {
    const size = folders.all.length;
    const weights = new Float64Array(size);
    const counts = new Float64Array(size);
    const hues = new Float64Array(size * hueCount);
    const starts = new Uint32Array(size + 1);
    for (let row = 0; row < report.count; ++row) {
      if (selection.passes(row)) {
        const number = folders.ofRow[row];
        weights[number] += report.weight[row];
        counts[number] += 1;
        hues[number * hueCount + report.facets[report.facet[row]].hue] += report.weight[row];
        starts[number + 1] += 1;
      }
    }
    for (let i = 0; i < size; ++i) {
      starts[i + 1] += starts[i];
    }
    const rows = new Uint32Array(starts[size]);
    const next = starts.slice();
    for (let row = 0; row < report.count; ++row) {
      if (selection.passes(row)) {
        rows[next[folders.ofRow[row]]++] = row;
      }
    }
    for (let i = size - 1; i > 0; --i) {
      const parent = folders.all[i].parent.number;
      weights[parent] += weights[i];
      counts[parent] += counts[i];
      for (let hue = 0; hue < hueCount; ++hue) {
        hues[parent * hueCount + hue] += hues[i * hueCount + hue];
      }
    }
    sums = {weights, counts, hues, rows, starts};
  }

  function mainHue(number) {
    let best = 0;
    for (let hue = 1; hue < hueCount; ++hue) {
      if (sums.hues[number * hueCount + hue] > sums.hues[number * hueCount + best]) {
        best = hue;
      }
    }
    return best;
  }

  const ownRows = (number) => sums.rows.subarray(sums.starts[number], sums.starts[number + 1]);

  function folderItem(folder) {
    let node = folder;
    let label = node.name;
    // A folder that only leads to another one needs no tile of its own.
    for (;;) {
      const filled = [...node.children.values()].filter((child) => sums.weights[child.number] > 0);
      if (filled.length !== 1 || ownRows(node.number).length > 0) {
        break;
      }
      node = filled[0];
      label += "\\" + node.name;
    }
    return {folder: node, label, value: sums.weights[node.number], count: sums.counts[node.number],
      hue: mainHue(node.number)};
  }

  // Gives an item that takes `area`, the head and the edges among it, its children.
  function open(item, area) {
    const number = item.folder.number;
    const least = item.value * smallestTile / area;
    const children = [];
    const rest = {rest: true, value: 0, count: 0, hue: 0, largest: 0};
    const merge = (value, count, hue) => {
      rest.value += value;
      rest.count += count;
      if (value > rest.largest) {
        rest.largest = value;
        rest.hue = hue;
      }
    };
    for (const child of item.folder.children.values()) {
      const value = sums.weights[child.number];
      if (value >= least && value > 0) {
        children.push(folderItem(child));
      } else {
        merge(value, sums.counts[child.number], mainHue(child.number));
      }
    }
    for (const row of ownRows(number)) {
      const value = report.weight[row];
      const {hue} = report.facets[report.facet[row]];
      if (value >= least && value > 0) {
        children.push({row, label: report.name[row], value, count: 1, hue});
      } else {
        merge(value, 1, hue);
      }
    }
    children.sort((a, b) => b.value - a.value);
    for (const item of children.splice(100)) {
      merge(item.value, item.count, item.hue);
    }
    if (rest.value > 0) {
      rest.label = format.number(rest.count) + " smaller";
      children.push(rest);
    }
    item.children = children;
  }

  function build(width, height) {
    const number = selection.state.folder.number;
    const root = {folder: selection.state.folder, label: "", value: sums.weights[number],
      count: sums.counts[number], hue: 0, depth: 0};
    if (root.value === 0) {
      return null;
    }
    const areaOf = (item) => item.value / root.value * width * height;
    const areaIn = (item) => {
      const side = Math.sqrt(areaOf(item));
      return Math.max(1, (side - 6) * (side - headHeight - 3));
    };
    open(root, areaOf(root));
    const closed = [...root.children];
    let tiles = closed.length;
    closed.forEach((item) => { item.depth = 1; });
    while (tiles < mostTiles) {
      let best = -1;
      closed.forEach((item, i) => {
        if (item.folder && item.depth < 6 && areaOf(item) >= smallestOpen &&
            (best < 0 || item.value > closed[best].value)) {
          best = i;
        }
      });
      if (best < 0) {
        break;
      }
      const [item] = closed.splice(best, 1);
      open(item, areaIn(item));
      item.children.forEach((child) => { child.depth = item.depth + 1; });
      closed.push(...item.children);
      tiles += item.children.length;
    }
    const hasHead = (d) => d.depth > 0 && d.x1 - d.x0 > 50 && d.y1 - d.y0 > 40;
    return d3.treemap().size([width, height]).round(true).paddingInner(2)
      .paddingTop((d) => hasHead(d) ? headHeight : d.depth > 0 ? 3 : 0)
      .paddingRight((d) => d.depth > 0 ? 3 : 0).paddingBottom((d) => d.depth > 0 ? 3 : 0)
      .paddingLeft((d) => d.depth > 0 ? 3 : 0)(
        d3.hierarchy(root, (d) => d.children).sum((d) => d.children ? 0 : d.value)
          .sort((a, b) => b.value - a.value));
  }

  let tiles = [];   // {place: the node of the layout, element}
  let near = [];    // those directly in the open folder
  let current = 0;  // the one of them that has the focus, or would get it

  const kindOf = (item) => item.folder ? "folder" : item.rest ? "small ones" : report.kind === "empty" ? "empty folder"
    : "file";

  function describe(item, whole) {
    const amount = report.measure(item.value) +
      (item.folder && report.kind !== "empty" ? " in " + report.things(item.count) : "");
    const kind = report.facets.find((facet) => facet.hue === item.hue);
    const facet = item.row === undefined ? null : report.facets[report.facet[item.row]];
    return {
      name: format.name(item.label), amount, share: format.percent(item.value, whole) + " of this folder",
      facet: facet ? facet.label : report.facets.length <= hueCount && kind ? "mostly " + kind.label : "",
    };
  }

  function tileOf(place) {
    const item = place.data;
    const width = place.x1 - place.x0;
    const height = place.y1 - place.y0;
    const isNear = place.depth === 1;
    const element = make(isNear ? "button" : "div", "tile hue" + item.hue);
    element.classList.toggle("open", item.children !== undefined);
    element.classList.toggle("small", item.rest === true);
    element.style.transform = "translate(" + place.x0 + "px," + place.y0 + "px)";
    element.style.width = width + "px";
    element.style.height = height + "px";
    const label = make("bdi", "label", format.name(item.label));
    if (item.children !== undefined) {
      if (width > 50 && height > 40) {
        element.classList.add("named");
        element.append(make("span", "line", label, width > 130 ? make("span", "amount", report.measure(item.value)) : ""));
      }
    } else if (width > 54 && height > 20) {
      element.classList.add("named");
      element.append(label);
      if (height > 38) {
        element.append(make("span", "amount", report.measure(item.value)));
      }
    }
    if (isNear) {
      const text = describe(item, sums.weights[selection.state.folder.number]);
      element.type = "button";
      element.tabIndex = -1;
      element.setAttribute("aria-label", [text.name, kindOf(item), text.amount, text.share, text.facet]
        .filter((part) => part !== "").join(", "));
    } else {
      element.setAttribute("aria-hidden", "true");
    }
    return element;
  }

  function draw() {
    const width = box.clientWidth;
    const height = box.clientHeight;
    const layout = width > 0 && height > 0 ? build(width, height) : null;
    hideTip();
    tiles = [];
    if (layout === null) {
      const nothing = selection.shown.length === 0 ? "Nothing here passes the filters." : "What is here takes no space.";
      box.replaceChildren(make("p", "nothing muted", nothing));
      near = [];
      return;
    }
    layout.each((place) => {
      if (place.depth > 0 && place.x1 - place.x0 >= 2 && place.y1 - place.y0 >= 2) {
        tiles.push({place, element: tileOf(place)});
      }
    });
    near = tiles.filter((tile) => tile.place.depth === 1);
    current = Math.min(current, Math.max(near.length - 1, 0));
    tiles.forEach((tile, i) => { tile.element.dataset.i = String(i); });
    if (near.length > 0) {
      near[current].element.tabIndex = 0;
    }
    box.replaceChildren(...tiles.map((tile) => tile.element), frame);
    frame.hidden = true;
  }

  function focus(i) {
    if (near.length === 0) {
      return;
    }
    near[current].element.tabIndex = -1;
    current = i;
    near[current].element.tabIndex = 0;
    near[current].element.focus();
  }

  // The tile next to the current one on a side: the closest, and of two the one that lies straighter.
  function neighbour(key) {
    const middle = ({place}) => [(place.x0 + place.x1) / 2, (place.y0 + place.y1) / 2];
    const [x, y] = middle(near[current]);
    const here = near[current].place;
    let best = current;
    let least = Infinity;
    near.forEach((tile, i) => {
      const {place} = tile;
      const [tx, ty] = middle(tile);
      const along = {ArrowRight: place.x0 - here.x1, ArrowLeft: here.x0 - place.x1,
        ArrowDown: place.y0 - here.y1, ArrowUp: here.y0 - place.y1}[key];
      if (i === current || along < -1) {
        return;
      }
      const flat = key === "ArrowLeft" || key === "ArrowRight";
      const beside = flat ? Math.max(0, place.y0 - here.y1, here.y0 - place.y1)
        : Math.max(0, place.x0 - here.x1, here.x0 - place.x1);
      const distance = along + 4 * beside + 0.01 * Math.abs(flat ? ty - y : tx - x);
      if (distance < least) {
        least = distance;
        best = i;
      }
    });
    return best;
  }

  function openFolder(folder) {
    const hadFocus = box.contains(document.activeElement);
    const left = selection.state.folder;
    current = 0;
    selection.openFolder(folder);
    drawNow();
    const back = near.findIndex(({place}) => place.data.folder && folders.contains(place.data.folder, left.number));
    if (back >= 0 && left !== folder) {
      near.forEach(({element}) => { element.tabIndex = -1; });
      current = back;
      near[current].element.tabIndex = 0;
    }
    if (hadFocus) {
      focus(current);
    }
    box.classList.remove("fresh");
    void box.offsetWidth;
    box.classList.add("fresh");
    byId("say").textContent = folders.pathOf(folder) + ": " + report.things(selection.shown.length) + ", " +
      report.measure(selection.weight);
  }

  function goUp() {
    const {folder} = selection.state;
    if (folder === folders.home) {
      return;
    }
    // Past the folders that only lead here, as on the way down.
    let up = folder.parent;
    while (up !== folders.home && [...up.children.values()].filter((child) => sums.weights[child.number] > 0).length === 1 &&
        ownRows(up.number).length === 0) {
      up = up.parent;
    }
    openFolder(up);
  }

  function act(place) {
    const item = place.data;
    if (item.folder) {
      openFolder(item.folder);
    } else if (place.depth > 1) {
      openFolder(place.parent.data.folder);
    } else if (item.rest) {
      table.focus();
    } else {
      table.show(item.row);
    }
  }

  const placeAt = (target) => {
    const element = target instanceof Element ? target.closest("[data-i]") : null;
    return element === null ? null : tiles[Number(element.dataset.i)].place;
  };

  function showTip(place, x, y) {
    const text = describe(place.data, sums.weights[selection.state.folder.number]);
    const lines = [text.amount + ", " + text.share];
    if (text.facet) {
      lines.push(text.facet);
    }
    tip.replaceChildren(make("b", "", make("bdi", "", text.name)), ...lines.map((line) => make("span", "", line)));
    tip.hidden = false;
    const left = Math.min(x + 14, document.documentElement.clientWidth - tip.offsetWidth - 8);
    const above = y + 18 + tip.offsetHeight > document.documentElement.clientHeight;
    tip.style.left = Math.max(8, left) + "px";
    tip.style.top = (above ? y - tip.offsetHeight - 10 : y + 18) + "px";
  }

  function hideTip() {
    tip.hidden = true;
  }

  box.addEventListener("click", (event) => {
    const place = placeAt(event.target);
    if (place !== null) {
      const i = near.findIndex((tile) => tile.place === place);
      if (i >= 0) {
        current = i;
      }
      act(place);
    }
  });
  box.addEventListener("pointermove", (event) => {
    const place = event.pointerType === "touch" ? null : placeAt(event.target);
    if (place === null) {
      hideTip();
    } else {
      showTip(place, event.clientX, event.clientY);
    }
  });
  box.addEventListener("pointerleave", hideTip);
  box.addEventListener("focusin", (event) => {
    const place = placeAt(event.target);
    const i = near.findIndex((tile) => tile.place === place);
    if (i < 0 || !event.target.matches(":focus-visible")) {
      return;
    }
    frame.style.transform = event.target.style.transform;
    frame.style.width = event.target.style.width;
    frame.style.height = event.target.style.height;
    frame.hidden = false;
    const area = event.target.getBoundingClientRect();
    showTip(place, area.left + Math.min(area.width / 2, 40), area.top + Math.min(area.height / 2, 30));
  });
  box.addEventListener("focusout", () => {
    frame.hidden = true;
    hideTip();
  });
  box.addEventListener("keydown", (event) => {
    if (event.altKey || event.ctrlKey || event.metaKey || near.length === 0) {
      return;
    }
    if (/^Arrow/.test(event.key)) {
      focus(neighbour(event.key));
    } else if (event.key === "Home" || event.key === "End") {
      focus(event.key === "Home" ? 0 : near.length - 1);
    } else if (event.key === "Backspace" || event.key === "Escape") {
      goUp();
    } else {
      return;
    }
    event.preventDefault();
  });

  // Many changes of one moment are drawn once.
  let waiting = 0;
  function drawNow() {
    cancelAnimationFrame(waiting);
    waiting = 0;
    draw();
  }
  function drawSoon() {
    if (waiting === 0) {
      waiting = requestAnimationFrame(drawNow);
    }
  }

  return {openFolder, drawNow, drawSoon, sum};
})();
