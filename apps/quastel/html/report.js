// The report: one array for each column, so that many rows cost little, and what is particular to the
// kind of scan.
const report = (() => {
  const data = JSON.parse(byId("report").textContent);
  const count = data.rows.length;
  const place = new Map(data.columns.map((name, i) => [name, i]));
  const kind = data.command;

  const cells = (name) => {
    const i = place.get(name);
    return i === undefined ? null : data.rows.map((row) => row[i]);
  };
  const numbers = (name, otherwise) => {
    const values = cells(name);
    return values === null ? null : Float64Array.from(values, (v) => v === null ? otherwise : v);
  };

  const folder = numbers("folder", 0);
  const name = cells("name");
  const modified = cells("modified");
  const group = numbers("group", -1);
  const selected = numbers("selected", 0);
  // What the tiles and the sums go by.
  const weight = numbers(kind === "empty" ? "folders" : "size", 0).map((v) => Math.max(v, 0));

  // Each row belongs to one facet: the chips above the table, and the colours.
  const facets = [];
  const facet = new Uint16Array(count);
  function sortIntoFacets(labels, facetOf) {
    for (const label of labels) {
      facets.push({label, count: 0, weight: 0, hue: facets.length % 10});
    }
    for (let i = 0; i < count; ++i) {
      facet[i] = facetOf(i);
      facets[facet[i]].count += 1;
      facets[facet[i]].weight += weight[i];
    }
  }
  const step = (value, limits) => {
    const i = limits.findIndex((limit) => value < limit);
    return i < 0 ? limits.length : i;
  };

  if (kind === "large") {
    sortIntoFacets(data.groups.map((g) => g.title), (i) => group[i]);
  } else if (kind === "junk") {
    const outermost = (g) => data.groups[g].parent === null ? g : outermost(data.groups[g].parent);
    const categories = data.groups.map((g, i) => i).filter((i) => data.groups[i].parent === null);
    const places = new Map(categories.map((g, i) => [g, i]));
    sortIntoFacets(categories.map((g) => data.groups[g].name),
      (i) => places.get(outermost(group[i])));
  } else if (kind === "duplicates") {
    sortIntoFacets(["2 copies", "3 copies", "4 to 9 copies", "10 copies and more"],
      (i) => step(data.groups[group[i]].count, [3, 4, 10]));
  } else if (kind === "empty") {
    sortIntoFacets(["One folder", "2 to 9 folders", "10 folders and more"],
      (i) => step(weight[i], [2, 10]));
  } else {
    const day = 24 * 3600 * 1000;
    const now = Date.parse(data.start_time);
    sortIntoFacets(["Within 30 days", "Within a year", "1 to 3 years old", "Older", "Without a date"],
      (i) => modified[i] === null ? 4
        : step(now - Date.parse(modified[i] + "Z"), [31 * day, 366 * day, 3 * 365.25 * day]));
  }

  return {
    data, kind, count, folder, name, modified, group, selected, weight, facets, facet,

    // "1.4 GiB", and for empty folders "12 folders".
    measure: (value) => kind === "empty" ? format.counted(value, "folder", "folders") : format.size(value),

    things: (value) => kind === "empty" ? format.counted(value, "empty folder", "empty folders")
      : format.counted(value, "file", "files"),

    path: (row) => data.folders[folder[row]] + "\\" + name[row],

    groupOf: (row) => group !== null && group[row] >= 0 ? data.groups[group[row]] : null,
  };
})();
