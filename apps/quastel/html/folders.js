// The folders as a tree. A folder's number is its place in a walk from the top, so that all folders
// below it have the numbers up to `end`.
const folders = (() => {
  // "C:", "\\server\share" or "", and the names below it.
  function split(path) {
    const network = /^[\\/]{2}[^\\/]+[\\/][^\\/]+/.exec(path);
    const first = network ? network[0] : null;
    const rest = (first === null ? path : path.slice(first.length)).split(/[\\/]/);
    if (first !== null) {
      rest.shift();
      rest.unshift(first);
    }
    return rest;
  }

  const top = {name: "", parent: null, children: new Map(), number: 0, end: 0};
  const leaves = report.data.folders.map((path) => {
    let node = top;
    for (const name of split(path)) {
      // Windows does not tell capitals from small letters.
      const key = name.toUpperCase();
      let child = node.children.get(key);
      if (child === undefined) {
        child = {name, parent: node, children: new Map(), number: 0, end: 0};
        node.children.set(key, child);
      }
      node = child;
    }
    return node;
  });

  const all = [];
  const open = [[top, top.children.values()]];
  all.push(top);
  // By hand: paths may be deeper than calls.
  while (open.length > 0) {
    const [node, children] = open[open.length - 1];
    const next = children.next();
    if (next.done) {
      node.end = all.length;
      open.pop();
    } else {
      next.value.number = all.length;
      all.push(next.value);
      open.push([next.value, next.value.children.values()]);
    }
  }

  const ofRow = Uint32Array.from(report.folder, (i) => leaves[i].number);
  const hasRows = new Uint8Array(all.length);
  for (const number of ofRow) {
    hasRows[number] = 1;
  }
  // The way down to the first folder where there is a choice tells nothing.
  let home = top;
  while (home.children.size === 1 && hasRows[home.number] === 0) {
    home = home.children.values().next().value;
  }

  function pathOf(node) {
    const names = [];
    for (let at = node; at !== null && at !== top; at = at.parent) {
      names.unshift(at.name);
    }
    return names.join("\\") + (names.length === 1 && /^[A-Za-z]:$/.test(names[0]) ? "\\" : "");
  }

  // From home down to the folder.
  function trail(node) {
    const nodes = [];
    for (let at = node; at !== null; at = at.parent) {
      nodes.unshift(at);
      if (at === home) {
        break;
      }
    }
    return nodes;
  }

  return {all, home, ofRow, pathOf, trail, contains: (node, number) => number >= node.number && number < node.end};
})();
