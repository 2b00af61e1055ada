import type { phoneEn } from "./phone.en.ts";

/** The second layout of a page, for phones, in Chinese. */
export const phoneZh: Record<keyof typeof phoneEn, string> = {
  phoneLayout: "手机布局",
  wide: "大屏布局",
  addPhone: "添加手机布局",
  editPhone: "编辑手机布局",
  addPhoneHint: "竖屏手机可为同一页面的组件使用另外的位置和大小。",
  arrangeAnew: "重新排列",
  removePhone: "移除",
  phoneHint: "位置、大小和字号只用于手机。其他属性由两种布局共用；在此添加或删除的组件，两种布局都会添加或删除。",
  hideOnPhone: "在手机上隐藏",
  showOnPhone: "在手机上显示",
  hiddenOnPhone: "在手机上隐藏的组件",
  ofPhone: "手机布局：{0}",
};
