// What is shown: a folder, a part of the path, facets, a group; and in which order. Whoever shows it
// listens for changes.
const selection = (() => {
  const listeners = [];
  const state = {folder: folders.home, text: "", facets: new Set(), group: null, sort: null};

  const keys = new Map();
  // Paths are asked for again and again while somebody types.
  const lowerPaths = [];
  function lowerPath(row) {
    return lowerPaths[row] ?? (lowerPaths[row] = report.path(row).toLowerCase());
  }

  // The values of a column that are compared: numbers, or texts without regard to capitals.
  function keysOf(column) {
    if (!keys.has(column.id)) {
      const values = new Array(report.count);
      for (let i = 0; i < report.count; ++i) {
        const value = column.key(i);
        values[i] = typeof value === "string" ? value.toUpperCase() : value;
      }
      keys.set(column.id, values);
    }
    return keys.get(column.id);
  }

  let order = Uint32Array.from({length: report.count}, (_, i) => i);
  function sort(column, descending) {
    state.sort = {column, descending};
    const values = keysOf(column);
    const sign = descending ? -1 : 1;
    order = Uint32Array.from({length: report.count}, (_, i) => i).sort((a, b) => {
      if (values[a] < values[b]) {
        return -sign;
      }
      return values[a] > values[b] ? sign : a - b;
    });
    change();
  }

  // Told apart from the folder, because the map shows the folder's neighbours too.
  function passes(row) {
    return (state.facets.size === 0 || state.facets.has(report.facet[row])) &&
      (state.group === null || report.group[row] === state.group) &&
      (state.text === "" || lowerPath(row).includes(state.text));
  }

  let passing = new Uint8Array(report.count).fill(1);
  let shown = order;
  let weight = 0;

  function select() {
    const rows = [];
    weight = 0;
    for (const row of order) {
      if (passing[row] === 1 && folders.contains(state.folder, folders.ofRow[row])) {
        rows.push(row);
        weight += report.weight[row];
      }
    }
    shown = rows;
  }

  function change() {
    select();
    listeners.forEach((listener) => listener());
  }

  function filter(changes) {
    Object.assign(state, changes);
    for (let row = 0; row < report.count; ++row) {
      passing[row] = passes(row) ? 1 : 0;
    }
    change();
  }

  select();
  return {
    state, sort, filter,
    get shown() { return shown; },
    get weight() { return weight; },
    passes: (row) => passing[row] === 1,
    isFiltered: () => state.text !== "" || state.facets.size > 0 || state.group !== null ||
      state.folder !== folders.home,
    openFolder(folder) {
      state.folder = folder;
      change();
    },
    // The order that the report came in, which is that of a column.
    startWith(column, descending) { state.sort = column ? {column, descending} : null; },
    listen: (listener) => listeners.push(listener),
    change,
  };
})();
