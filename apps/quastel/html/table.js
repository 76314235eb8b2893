// The table. Of its rows only those that can be seen are in the document.
const table = (() => {
  const tallest = 8000000;  // pixels; browsers have a limit for the height of an element
  const beyond = 8;         // rows drawn above and below what can be seen
  const printed = 1000;

  const grid = byId("grid");
  const body = make("div", "rows");
  body.setAttribute("role", "rowgroup");
  const detail = byId("detail");

  const fileText = (row) => format.name(report.name[row]);
  const dot = (row) => {
    const mark = make("i", "dot hue" + report.facets[report.facet[row]].hue);
    mark.setAttribute("aria-hidden", "true");
    return mark;
  };
  // The start of a path gives way, not its end.
  function pathParts(path) {
    const text = format.name(path);
    const cut = text.lastIndexOf("\\");
    const last = make("bdi", "last", cut < 0 ? text : text.slice(cut));
    return cut < 0 ? [last] : [make("bdi", "first", text.slice(0, cut)), last];
  }

  const nameColumn = {id: "name", label: "Name", key: (row) => report.name[row],
    fill: (row) => [make("bdi", "text", fileText(row))], title: fileText};
  const folderColumn = {id: "folder", label: "Folder", key: (row) => report.data.folders[report.folder[row]],
    fill: (row) => pathParts(report.data.folders[report.folder[row]]),
    title: (row) => format.name(report.data.folders[report.folder[row]])};
  const amountColumn = {id: "size", label: report.kind === "empty" ? "Folders" : "Size", amount: true,
    key: (row) => report.weight[row],
    fill: (row) => [report.kind === "empty" ? format.number(report.weight[row]) : format.size(report.weight[row])],
    title: (row) => report.kind === "empty" ? "" : format.counted(report.weight[row], "byte", "bytes")};
  const timeColumn = {id: "modified", label: "Modified", recent: true, key: (row) => report.modified[row] ?? "",
    fill: (row) => [format.minute(report.modified[row])]};
  const facetColumn = {id: "category", label: "Category", key: (row) => report.facets[report.facet[row]].label,
    fill: (row) => [dot(row), make("span", "text", report.facets[report.facet[row]].label)]};
  const columnsOf = {
    large: [nameColumn, folderColumn, facetColumn, amountColumn, timeColumn],
    duplicates: [
      {id: "group", label: "Group", amount: true, up: true, key: (row) => report.group[row],
        fill: (row) => [format.number(report.group[row] + 1)]},
      nameColumn, folderColumn,
      {id: "copies", label: "Copies", amount: true, key: (row) => report.groupOf(row).count,
        fill: (row) => [dot(row), format.number(report.groupOf(row).count)]},
      amountColumn,
      {id: "reclaimable", label: "Reclaimable", amount: true, key: (row) => report.groupOf(row).reclaimable,
        fill: (row) => [format.size(report.groupOf(row).reclaimable)]},
      timeColumn],
    junk: [nameColumn, folderColumn, facetColumn,
      {id: "selected", label: "Selected", key: (row) => 1 - report.selected[row],
        fill: (row) => [report.selected[row] === 1 ? "Yes" : "No"]},
      amountColumn, timeColumn],
    empty: [nameColumn, folderColumn, amountColumn],
    list: [nameColumn, folderColumn, amountColumn, timeColumn],
  };
  const columns = columnsOf[report.kind];

  // Head.
  const heads = columns.map((column) => {
    const button = make("button", "", make("span", "", column.label), make("span", "arrow"));
    button.type = "button";
    const cell = make("div", "cell c-" + column.id + (column.amount ? " amount" : ""), button);
    cell.setAttribute("role", "columnheader");
    button.addEventListener("click", () => {
      const {sort} = selection.state;
      const first = (column.amount && !column.up) || column.recent === true;
      selection.sort(column, sort !== null && sort.column === column ? !sort.descending : first);
    });
    return cell;
  });
  const headRow = make("div", "row headrow", ...heads);
  headRow.setAttribute("role", "row");
  headRow.setAttribute("aria-rowindex", "1");
  const head = make("div", "headgroup", headRow);
  head.setAttribute("role", "rowgroup");
  grid.classList.add("k-" + report.kind);
  grid.setAttribute("aria-colcount", String(columns.length));
  grid.append(head, body);

  function drawHeads() {
    const {sort} = selection.state;
    columns.forEach((column, i) => {
      const sorted = sort !== null && sort.column === column;
      heads[i].setAttribute("aria-sort", !sorted ? "none" : sort.descending ? "descending" : "ascending");
      heads[i].querySelector(".arrow").textContent = !sorted ? "" : sort.descending ? "\u2193" : "\u2191";
    });
  }

  // Rows.
  let active = -1;  // its place among the rows shown
  let rowHeight = 34;
  const realHeight = () => selection.shown.length * rowHeight;
  const bodyHeight = () => Math.min(realHeight(), tallest);
  const viewHeight = () => Math.max(grid.clientHeight - head.offsetHeight, rowHeight);
  // Where the rows stand when the element is scrolled; the same number unless the table is too tall.
  const stretch = () => bodyHeight() > viewHeight() ? (realHeight() - viewHeight()) / (bodyHeight() - viewHeight()) : 1;

  function rowElement(i) {
    const row = selection.shown[i];
    const element = make("div", "row");
    element.id = "row-" + i;
    element.setAttribute("role", "row");
    element.setAttribute("aria-rowindex", String(i + 2));
    element.setAttribute("aria-selected", String(i === active));
    element.dataset.i = String(i);
    if (report.kind === "duplicates" && report.group[row] % 2 === 1) {
      element.classList.add("odd");
    }
    for (const column of columns) {
      const cell = make("div", "cell c-" + column.id + (column.amount ? " amount" : ""), ...column.fill(row));
      cell.setAttribute("role", "gridcell");
      const title = column.title ? column.title(row) : "";
      if (title !== "") {
        cell.title = title;
      }
      element.append(cell);
    }
    return element;
  }

  function draw() {
    const count = selection.shown.length;
    rowHeight = parseFloat(getComputedStyle(grid).getPropertyValue("--row-height")) || rowHeight;
    body.style.height = Math.max(bodyHeight(), count === 0 ? 3 * rowHeight : 0) + "px";
    grid.setAttribute("aria-rowcount", String(count + 1));
    if (count === 0) {
      body.replaceChildren(make("p", "nothing muted", report.count === 0 ? "Nothing was found." : "No row passes the filters."));
      return;
    }
    const scrolled = grid.scrollTop;
    const top = scrolled * stretch();
    const first = Math.max(0, Math.floor(top / rowHeight) - beyond);
    const end = Math.min(count, Math.ceil((top + viewHeight()) / rowHeight) + beyond);
    const rows = [];
    for (let i = first; i < end; ++i) {
      const element = rowElement(i);
      element.style.transform = "translateY(" + (i * rowHeight - top + scrolled) + "px)";
      rows.push(element);
    }
    body.replaceChildren(...rows);
    if (active >= first && active < end) {
      grid.setAttribute("aria-activedescendant", "row-" + active);
    } else {
      grid.removeAttribute("aria-activedescendant");
    }
  }

  let waiting = 0;
  function drawSoon() {
    if (waiting === 0) {
      waiting = requestAnimationFrame(() => {
        waiting = 0;
        draw();
      });
    }
  }

  function scrollTo(i) {
    const scale = stretch();
    const top = grid.scrollTop * scale;
    if (i * rowHeight < top) {
      grid.scrollTop = i * rowHeight / scale;
    } else if ((i + 1) * rowHeight > top + viewHeight()) {
      grid.scrollTop = ((i + 1) * rowHeight - viewHeight()) / scale;
    }
  }

  function activate(i) {
    active = Math.max(0, Math.min(i, selection.shown.length - 1));
    if (selection.shown.length === 0) {
      active = -1;
    } else {
      scrollTo(active);
    }
    draw();
    drawDetail();
  }

  function copy(text, button) {
    const done = () => { button.textContent = "Copied"; };
    const byHand = () => {
      // Where a page from a file may not use the clipboard.
      const range = document.createRange();
      range.selectNodeContents(detail.querySelector(".path"));
      getSelection().removeAllRanges();
      getSelection().addRange(range);
      button.textContent = document.execCommand("copy") ? "Copied" : "Now press Ctrl+C";
    };
    if (navigator.clipboard) {
      navigator.clipboard.writeText(text).then(done, byHand);
    } else {
      byHand();
    }
  }

  function button(label, action) {
    const element = make("button", "plain", label);
    element.type = "button";
    element.addEventListener("click", () => action(element));
    return element;
  }

  function drawDetail() {
    if (active < 0) {
      detail.replaceChildren(make("p", "muted", report.count === 0 ? ""
        : "Choose a row to see the whole of its path. Arrow keys move from row to row."));
      return;
    }
    const row = selection.shown[active];
    const path = report.path(row);
    const facts = [report.kind === "empty" ? report.measure(report.weight[row])
      : format.size(report.weight[row]) + " (" + format.counted(report.weight[row], "byte", "bytes") + ")"];
    if (report.modified !== null && report.modified[row] !== null) {
      facts.push("modified " + report.modified[row].replace("T", " "));
    }
    const group = report.groupOf(row);
    if (report.kind === "duplicates") {
      facts.push("group " + format.number(report.group[row] + 1) + " of " + format.counted(group.count, "copy", "copies"));
    } else if (report.kind === "junk" && group !== null) {
      facts.push(report.facets[report.facet[row]].label, "found by " + format.name(group.name));
    } else if (report.kind === "large") {
      facts.push(report.facets[report.facet[row]].label);
    }
    const actions = [
      button("Copy path", (element) => copy(path, element)),
      button("Show its folder", () => treemap.openFolder(folders.all[folders.ofRow[row]])),
    ];
    if (report.kind === "duplicates") {
      actions.push(button("Only this group", () => selection.filter({group: report.group[row], folder: folders.home})));
    }
    detail.replaceChildren(make("p", "path", make("bdi", "", format.name(path))), make("p", "muted", facts.join(" \u00b7 ")),
      make("p", "actions", ...actions));
  }

  grid.addEventListener("scroll", drawSoon, {passive: true});
  body.addEventListener("click", (event) => {
    const element = event.target instanceof Element ? event.target.closest("[data-i]") : null;
    if (element !== null) {
      activate(Number(element.dataset.i));
    }
  });
  grid.addEventListener("keydown", (event) => {
    if (event.target !== grid || event.altKey || event.ctrlKey || event.metaKey) {
      return;
    }
    const page = Math.max(1, Math.floor(viewHeight() / rowHeight) - 1);
    const to = {ArrowDown: active + 1, ArrowUp: Math.max(active - 1, 0), PageDown: active + page,
      PageUp: Math.max(active - page, 0), Home: 0, End: selection.shown.length - 1}[event.key];
    if (to !== undefined) {
      event.preventDefault();
      activate(to);
    }
  });

  // Paper does not scroll.
  addEventListener("beforeprint", () => {
    const count = Math.min(selection.shown.length, printed);
    body.style.height = "auto";
    body.replaceChildren(...Array.from({length: count}, (_, i) => rowElement(i)));
    if (count < selection.shown.length) {
      body.append(make("p", "nothing muted", "The first " + format.number(count) + " of " +
        report.things(selection.shown.length) + "."));
    }
  });
  addEventListener("afterprint", draw);

  return {
    columns, draw, drawSoon, drawHeads,
    // After what is shown has changed.
    reset() {
      active = -1;
      grid.scrollTop = 0;
      drawHeads();
      draw();
      drawDetail();
    },
    focus: () => grid.focus(),
    show(row) {
      const i = selection.shown.indexOf(row);
      if (i >= 0) {
        activate(i);
        grid.focus({preventScroll: true});
        grid.scrollIntoView({block: "nearest"});
      }
    },
  };
})();
