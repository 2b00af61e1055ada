import type { findEn } from "./find.en.ts";

/** Find and replace, in Chinese. */
export const findZh: Record<keyof typeof findEn, string> = {
  findTitle: "查找和替换",
  find: "查找",
  replaceWith: "替换为",
  matchCase: "区分大小写",
  findIn: "范围",
  findIn_text: "文本和名称",
  findIn_content: "命令内容",
  findIn_interface: "命令的接口",
  findHint: "在所有页面中查找。命令内容按命令表单中的写法查找：\\r 是一个字符，1B 是一个字节。",
  foundCount: "在 {1} 个页面上找到 {0} 处。",
  foundMore: "仅显示并替换前 {0} 处，请输入更多文字以缩小范围。",
  becomes: "变为",
  showPlace: "在编辑器中显示",
  replaceCount: "替换 {0} 处",
  removeCount: "删除 {0} 处",
  replacedCount: "已替换 {0} 处，保存后生效。",
  replaceNot: "此处不替换。",
  replaceEmpty: "替换后内容为空。",
  replaceNoInterface: "没有名为“{0}”的接口。",
};
