// Numbers, sizes and times as people read them, like those that the program prints.
const format = {
  number(value) {
    return String(value).replace(/\B(?=(\d{3})+$)/g, ",");
  },

  counted(value, singular, plural) {
    return format.number(value) + " " + (value === 1 ? singular : plural);
  },

  size(bytes) {
    const units = ["KiB", "MiB", "GiB", "TiB", "PiB"];
    if (bytes < 1024) {
      return bytes + " B";
    }
    let value = bytes / 1024;
    let unit = 0;
    // 1023.95 would be rounded to 1024.0.
    while (value >= 1023.95 && unit + 1 < units.length) {
      value /= 1024;
      unit += 1;
    }
    return value.toFixed(1) + " " + units[unit];
  },

  duration(microseconds) {
    const seconds = microseconds / 1e6;
    if (microseconds < 1000) {
      return "under 1 ms";
    }
    if (seconds < 1) {
      return Math.round(microseconds / 1000) + " ms";
    }
    if (seconds < 59.95) {
      return seconds.toFixed(1) + " s";
    }
    const whole = Math.round(seconds);
    const two = (value) => String(value).padStart(2, "0");
    if (whole < 3600) {
      return Math.floor(whole / 60) + " min " + two(whole % 60) + " s";
    }
    return Math.floor(whole / 3600) + " h " + two(Math.floor(whole / 60) % 60) + " min";
  },

  // Of the time of a file, which has no zone: "2024-05-31 17:04".
  minute(iso) {
    return iso ? iso.slice(0, 16).replace("T", " ") : "";
  },

  // Of a moment, in the reader's zone.
  moment(iso) {
    const time = new Date(iso);
    return Number.isNaN(time.getTime()) ? iso
      : time.toLocaleString("en-GB", {dateStyle: "long", timeStyle: "short"});
  },

  percent(part, whole) {
    const share = whole > 0 ? 100 * part / whole : 0;
    return share > 0 && share < 1 ? "under 1 %" : Math.round(share) + " %";
  },

  // A name must neither break its line nor turn the letters around it.
  name(text) {
    return text.replace(/[\u0000-\u001f\u007f-\u009f\u200e\u200f\u2028-\u202e\u2066-\u2069]/g, "\ufffd");
  },
};

// An element with a class and content: texts and elements.
function make(tag, name, ...content) {
  const element = document.createElement(tag);
  if (name) {
    element.className = name;
  }
  element.append(...content);
  return element;
}

function byId(id) {
  return document.getElementById(id);
}
