import type { Tool } from "./toolbar.js";

/** What the tools do; the page puts it together. */
export interface ToolActs {
  contents(): void;
  hasContents(): boolean;
  open(): void;
  home(): void;
  fit(): void;
  views(): void;
  plan(): void;
  showsPlan(): boolean;
  walk(): void;
  isWalking(): boolean;
  section(): void;
  isCutting(): boolean;
  measure(): void;
  isMeasuring(): boolean;
  xray(): void;
  isXray(): boolean;
  hide(): void;
  isolate(): void;
  showAll(): void;
  rooms(): void;
  showsRooms(): boolean;
  colour(): void;
  isColoured(): boolean;
  compare(): void;
  share(): void;
}

export function toolsOf(acts: ToolActs): Tool[][] {
  return [
    [
      { id: "contents", label: "Contents", title: "Floors, classes and elements",
        icon: "M4 6h2M9 6h11M4 12h2M9 12h11M4 18h2M9 18h11", act: acts.contents,
        isOn: acts.hasContents },
      { id: "open", label: "Open", title: "Open files", icon: "M3 19V6h6l2 3h10v10z", act: acts.open },
    ],
    [
      { id: "home", label: "Home", title: "All of the model", key: "home",
        icon: "M4 11l8-7 8 7M6 10v10h12V10", act: acts.home },
      { id: "fit", label: "Fit", title: "What is selected, or all", key: "f",
        icon: "M4 9V4h5M15 4h5v5M20 15v5h-5M9 20H4v-5M9 9h6v6H9z", act: acts.fit },
      { id: "views", label: "Views", title: "The six views, projection and looks", key: "v",
        icon: "M12 3l8 4.5v9L12 21l-8-4.5v-9zM12 12l8-4.5M12 12v9M12 12L4 7.5", act: acts.views },
      { id: "plan", label: "Plan", title: "The floor's plan beside the model", key: "p",
        icon: "M4 4h16v16H4zM4 10h8M12 4v10M12 20v-2M16 14h4", act: acts.plan, isOn: acts.showsPlan },
      { id: "walk", label: "Walk", title: "Walk with W A S D, up and down with E and Q", key: "g",
        icon: "M13 4a1.5 1.5 0 1 0 .1 0M12 8l-2 6 3 2 1 5M10 14l-2 6M12 8l4 4M11 9l-3 4",
        act: acts.walk, isOn: acts.isWalking },
    ],
    [
      { id: "section", label: "Section", title: "Cut along planes and a box", key: "c",
        icon: "M4 8l8-4 8 4v8l-8 4-8-4zM3 14L21 6", act: acts.section, isOn: acts.isCutting },
      { id: "measure", label: "Measure", title: "Distance, height and area", key: "m",
        icon: "M3 15L15 3l6 6L9 21zM7 11l2 2M10 8l3 3M13 5l2 2", act: acts.measure,
        isOn: acts.isMeasuring },
      { id: "xray", label: "X-ray", title: "See through all that is not selected", key: "x",
        icon: "M4 4h16v16H4zM8 8h8v8H8zM4 4l4 4M20 4l-4 4M4 20l4-4M20 20l-4-4", act: acts.xray,
        isOn: acts.isXray },
      { id: "hide", label: "Hide", title: "Hide what is selected", key: "h",
        icon: "M3 12s3-6 9-6 9 6 9 6-3 6-9 6-9-6-9-6zM4 4l16 16", act: acts.hide },
      { id: "isolate", label: "Isolate", title: "Hide all that is not selected", key: "i",
        icon: "M8 8h8v8H8zM3 3v3M3 3h3M21 3v3M21 3h-3M3 21v-3M3 21h3M21 21v-3M21 21h-3",
        act: acts.isolate },
      { id: "all", label: "Show all", title: "Show what was hidden", key: "a",
        icon: "M3 12s3-6 9-6 9 6 9 6-3 6-9 6-9-6-9-6zM12 9a3 3 0 1 0 .1 0", act: acts.showAll },
      { id: "rooms", label: "Rooms", title: "Show rooms", key: "r",
        icon: "M4 4h16v16H4zM4 13h7M11 4v12M15 20v-6h5", act: acts.rooms, isOn: acts.showsRooms },
    ],
    [
      { id: "colour", label: "Colour", title: "Colour by a property",
        icon: "M12 3a9 9 0 1 0 0 18c2 0 2-2 1-3s0-3 2-3h3c2 0 3-1 3-3a9 9 0 0 0-9-9zM8 9v.1M12 7v.1M16 9v.1",
        act: acts.colour, isOn: acts.isColoured },
      { id: "compare", label: "Compare", title: "Compare two files",
        icon: "M4 5h7v14H4zM13 5h7v14h-7zM6 9h3M15 9h3M6 13h3M15 15h3", act: acts.compare },
      { id: "share", label: "Share", title: "Link, picture and BCF", icon:
        "M6 12a2.5 2.5 0 1 0 .1 0M17 5a2.5 2.5 0 1 0 .1 0M17 19a2.5 2.5 0 1 0 .1 0M8 13l7-4M8 15l7 5",
        act: acts.share },
    ],
  ];
}
