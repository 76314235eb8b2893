// Brings the parts together.
(() => {
  const orders = {
    size: ["size", true], modified: ["modified", true], category: ["category", false], name: ["name", false],
    reclaimable: ["reclaimable", true], count: ["copies", true],
  };
  const [id, descending] = orders[report.data.options.sort] ?? ["", false];
  selection.startWith(table.columns.find((column) => column.id === id) ?? null, descending);

  function draw() {
    treemap.sum();
    treemap.drawSoon();
    table.reset();
    filters.draw();
  }
  selection.listen(draw);
  treemap.sum();
  table.reset();
  filters.draw();
  treemap.drawNow();
  new ResizeObserver(treemap.drawSoon).observe(byId("map"));
  new ResizeObserver(table.drawSoon).observe(byId("grid"));
})();
