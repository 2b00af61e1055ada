import type { lockEn } from "./lock.en.ts";

/** The lock of the author's screens, in Chinese. */
export const lockZh: Record<keyof typeof lockEn, string> = {
  pinTitle: "编辑界面的 PIN 码",
  lock_set: "设置 PIN 码",
  lock_change: "修改 PIN 码",
  lock_remove: "取消 PIN 码",
  lockIsSet: "已设置 PIN 码：每个标签页打开编辑界面时需输入一次。",
  lockIsNotSet: "未设置 PIN 码：打开此地址的任何人都能修改页面。",
  lockUnsaved: "保存后生效。",
  lockHint:
    "用于防止他人随意进入编辑界面，不能抵御攻击：能通过网络访问服务器的人无需 PIN 码即可读写所有内容。与页面一样属于项目；已打开的标签页不受影响。",
  lockForgotten: "忘记 PIN 码时，须在服务器所在的计算机上删除 layout.json 中的“lock”字段。",
  pinNeeded: "编辑界面已锁定",
  pin: "PIN 码",
  pin_present: "当前 PIN 码",
  pin_fresh: "新 PIN 码",
  pin_again: "再次输入新 PIN 码",
  pinKeys: "数字键",
  pinBack: "删除最后一位",
  pinEnter: "打开",
  pinWrong: "PIN 码错误。",
  pinPause: "{0} 秒后可再试。",
  pinFault: "PIN 码须为 {0} 到 {1} 位数字。",
  pinDiffers: "与新 PIN 码不一致。",
};
