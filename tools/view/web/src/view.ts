// What is on show at present, and who wants to know when it changes.
export interface View {
  field: number;
  time: number; // from 0
  fixed: boolean; // range of the colours: of all times or of this one
  selected: number; // patch, -1: none
  hovered: number;
  building: number; // index, -1: all
  hidden: Set<number>; // kinds
}

export type Part = keyof View | "theme" | "edges";

export class Present {
  readonly view: View = {
    field: 0,
    time: 0,
    fixed: true,
    selected: -1,
    hovered: -1,
    building: -1,
    hidden: new Set(),
  };
  private readonly listeners: { parts: Set<Part>; task: () => void }[] = [];

  /** Runs `task` after a change of one of the parts. */
  on(parts: Part[], task: () => void): void {
    this.listeners.push({ parts: new Set(parts), task });
  }

  set<K extends keyof View>(part: K, value: View[K]): void {
    if (this.view[part] === value) return;
    this.view[part] = value;
    this.tell(part);
  }

  tell(part: Part): void {
    for (const { parts, task } of this.listeners) if (parts.has(part)) task();
  }
}
