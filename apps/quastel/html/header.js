// What was scanned, when, and what came of it.
(() => {
  const {data, kind} = report;
  const titles = {
    large: "Large files", duplicates: "Duplicates", junk: "Junk", empty: "Empty folders", list: "All files",
  };
  const title = kind === "list" && data.options.mode === "large" ? "Large files" : titles[kind];
  byId("title").textContent = title;
  byId("table-title").textContent = kind === "empty" ? "Folders" : "Files";
  if (kind === "empty") {
    byId("map-unit").textContent = "numbers of empty folders";
  }

  const bdi = (text) => make("bdi", "", format.name(text));
  const what = byId("what");
  if (data.roots.length > 0) {
    data.roots.forEach((root, i) => what.append(i === 0 ? "" : ", ", bdi(root)));
  } else if (kind === "junk") {
    what.append("By the rules of ", bdi(data.options.rules));
  }
  document.title = title + (data.roots.length > 0 ? " in " + data.roots.map(format.name).join(", ") : "") +
    " \u2013 quastel";
  byId("when").textContent = "Scanned " + format.moment(data.start_time) + ", in " +
    format.duration(data.performance.elapsed_us);
  byId("made-by").textContent = "Made by quastel " + data.client_version + " with library " +
    data.library_version + ".";

  const {totals} = data;
  const facts = byId("facts");
  const fact = (label, value, more) => {
    const text = make("dd", "", value);
    if (more) {
      text.append(make("span", "muted", more));
    }
    facts.append(make("div", "", make("dt", "", label), text));
  };
  const files = (count) => format.counted(count, "file", "files");
  if (kind === "empty") {
    fact("Empty folders", format.number(totals.item_count), "the outermost ones");
    fact("With all in them", format.number(totals.folder_count), "folders");
    fact("Seen", format.number(totals.folders_visited), "folders");
  } else {
    if (kind === "duplicates") {
      fact("Reclaimable", format.size(totals.reclaimable), "keeping one of each");
      fact("Groups", format.number(totals.group_count), "of equal files");
    }
    if (kind !== "list") {
      fact("Found", format.size(totals.total_bytes), files(totals.item_count));
    }
    if (kind === "junk") {
      fact("Selected", format.size(totals.selected_bytes), files(totals.selected_count));
    }
    fact("Seen", format.size(totals.bytes_visited), files(totals.files_visited));
  }

  const words = {
    load_rules_us: "Reading the rules", filter_roots_us: "Sorting out the roots", walk_us: "Walking the folders",
    group_by_size_us: "Grouping by size", sample_us: "Sampling", sample_keys_us: "Grouping by sample",
    plan_hashes_us: "Choosing what to hash", hash_us: "Hashing", group_by_hash_us: "Grouping by hash",
  };
  const stages = Object.entries(words).filter(([key]) => data.performance[key] > 0)
    .map(([key, label]) => ({label, time: data.performance[key]}));
  const longest = Math.max(...stages.map((stage) => stage.time));
  if (stages.length > 0) {
    const box = byId("stages");
    const bar = make("div", "bar");
    bar.setAttribute("aria-hidden", "true");
    const list = make("ul", "");
    list.setAttribute("aria-label", "Stages of the scan");
    stages.forEach((stage) => {
      // What would be a hair's breadth is left out.
      const colour = stage.time > longest / 300 ? "stage" + bar.children.length % 4 : "stage4";
      if (colour !== "stage4") {
        const part = make("span", colour);
        part.style.flexGrow = String(stage.time);
        bar.append(part);
      }
      list.append(make("li", "", make("i", colour), stage.label + " ", make("b", "", format.duration(stage.time))));
    });
    box.append(bar, list);
    box.classList.toggle("single", bar.children.length < 2);
    box.hidden = false;
  }

  const notices = byId("notices");
  const notice = (text) => {
    notices.append(make("li", "", text));
    notices.hidden = false;
  };
  if (data.status === "cancelled") {
    notice("The scan was cancelled: this is what it had found until then.");
  } else if (data.status !== "ok") {
    notice("The scan ended early: this is what it had found until then.");
  }
  const all = totals.item_count ?? totals.row_count;
  if (report.count < all) {
    notice("This page has " + format.number(report.count) + " of the " + report.things(all) +
      " found: the report was limited when it was made.");
  }
  if (data.exact.length > 0) {
    notice(format.counted(data.exact.length, "name is", "names are") +
      " no proper text: what cannot be shown of it is \ufffd.");
  }
})();
